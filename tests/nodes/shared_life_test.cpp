// Behaviour common to the nodes of images, materials and groups: creation without memory, and changes of connections.
#include "module/servers.h"
#include "tests/module/allocation.h"
#include "tests/module/fake_editors.h"
#include "tests/module/test_node.h"

#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

struct Class {
    const char *name;
    HostActivate *activate, *interface;
};

class SharedLife : public testing::TestWithParam<Class> {
  protected:
    FakeHost host;
    FakeEditors editors;
    TestNode node{host, GetParam().activate, GetParam().interface};
};

#define CLASS(Name)                                                                                                    \
    Class {                                                                                                            \
#Name, activatedWith < FakeEditors::lookup, Name##_Activate>, activatedWith < FakeEditors::lookup,             \
            Name##_Interface>                                                                                          \
    }
INSTANTIATE_TEST_SUITE_P(Classes, SharedLife,
                         testing::Values(CLASS(GaussianReflections), CLASS(GaussianRefractions), CLASS(PixelImage),
                                         CLASS(StoreMaterial), CLASS(GetMaterial)),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(SharedLife, FailsWithoutMemoryAndTouchesNothing) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    failNextAllocation();
    EXPECT_EQ(node.ops.create(node.ops.priv, &second, &error), nullptr);
    EXPECT_STREQ(error, "Couldn't allocate memory for instance.");
    EXPECT_EQ(host.takeLog(), Lines{});
    node.ops.destroy(nullptr);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(SharedLife, ConnectionsRedrawThePanelAndTheirLossIsTold) {
    node.panel();
    host.takeLog();
    for (HostInput &input : host.inputs) {
        if (input.node != &node.node) continue;
        EXPECT_EQ(input.event(node.instance, &input, kInputConnected, input.type), 1);
        EXPECT_EQ(input.event(node.instance, &input, kInputDisconnected, 0), 1);
        EXPECT_EQ(host.takeLog(), (Lines{"refresh", "refresh"}));
        EXPECT_EQ(input.event(node.instance, &input, kInputSourceDestroyed, 0), 1);
        EXPECT_EQ(host.takeLog(), (Lines{"refresh", "instanceUpdate NodeHandler"}));
        EXPECT_EQ(host.lastUpdated(), node.instance);
    }
}

} // namespace
} // namespace velm::plugin
