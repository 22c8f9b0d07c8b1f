// The module's own nodes that hold networks, nested three deep in this host's networks: from creation to destruction.
#include "host/graph/surface.h"
#include "host/load/lookup.h"
#include "host/panel/settings.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"
#include "tests/graph/listed_module.h"
#include "tests/graph/test_nodes.h"

#include <functional>

namespace velm::host::test {
namespace {

class ModuleGroups : public GraphTest {
  protected:
    static void SetUpTestSuite() { listModule(); }
    static HostNode &addModuleGroup(Network &network, const char *name) {
        return network.addNode(serverList().get("Velm Group Node"), name);
    }
    static Network &inside(HostNode &group) { return *group.nestedNetworks.at(0); }

    // Groups "One", "Two" and "Three", nested in this order, with a test node in the innermost that returns `scalar`.
    static HostNode &nest(Surface &surface, double scalar) {
        Network *at = &surface.network();
        for (const char *name : {"One", "Two", "Three"}) {
            HostNode &group = addModuleGroup(*at, name);
            at->connect(name, "Scalar", at->root().name, at == &surface.network() ? "Luminosity" : "Scalar");
            at = &inside(group);
        }
        HostNode &source = add(*at, "Source");
        testNode(source).scalar = scalar;
        at->connect("Source", "Scalar", at->root().name, "Scalar");
        return source;
    }
    double luminosityOf(Surface &surface) { return surface.evaluate(&sample).luminosity; }
};

using Lines = std::vector<std::string>;

TEST_F(ModuleGroups, PassRenderingOnThreeLevelsDeep) {
    Surface surface("Clay");
    nest(surface, 8);
    EXPECT_EQ(luminosityOf(surface), 8);
    journal().clear();
    surface.init(kInitRender);
    surface.newTime(3, 0.1);
    surface.cleanup();
    surface.network().clear();
    EXPECT_EQ(journal(), (Lines{"init 1 Source", "time 3 Source", "cleanup Source", "destroy Source"}));
}

TEST_F(ModuleGroups, AreCopiedWithTheirNetworks) {
    Surface surface("Clay"), copy("Copy");
    HostNode &source = nest(surface, 8);
    copy.network().copyFrom(surface.network());
    testNode(source).scalar = 5;
    EXPECT_EQ(luminosityOf(copy), 8);
    surface.network().clear();
    EXPECT_EQ(luminosityOf(copy), 8);
}

TEST_F(ModuleGroups, SaveTheirNetworksInTheirBlocks) {
    for (const int mode : {kStateBinary, kStateText}) {
        const auto saved = [mode](Surface &surface) {
            StateWriter writer(mode);
            surface.save(*writer.state());
            return writer.finish();
        };
        Surface surface("Clay"), again("Clay");
        nest(surface, 8);
        const std::string bytes = saved(surface);
        const std::string block = mode == kStateText ? "{ NodeEditor\n" : "NODE";
        int blocks = 0;
        for (auto at = bytes.find(block); at != std::string::npos; at = bytes.find(block, at + 1)) ++blocks;
        EXPECT_EQ(blocks, 3);
        StateReader reader(mode, bytes, "surface");
        again.load(*reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
        EXPECT_EQ(luminosityOf(again), 8);
        EXPECT_EQ(saved(again), bytes);
    }
}

std::string messageOf(const std::function<void()> &act) {
    try {
        act();
    } catch (const InputError &error) {
        return error.what();
    }
    return "no error";
}

// The group itself reports success even when its network fails.
TEST_F(ModuleGroups, CannotBeMadeToContainThemselves) {
    Surface surface("Clay");
    HostNode &source = nest(surface, 8);
    HostNode &one = surface.network().node("One"), &two = inside(one).node("Two");
    const HostInstanceOps &ops = *one.handler->instance;
    const auto failure = [](HostNode &node, HostError reported) {
        return failureOf(node, reported ? std::optional<std::string>(reported) : std::nullopt);
    };
    EXPECT_EQ(failure(two, ops.copy(two.instance, one.instance)),
              "cannot copy \"Group Node\" to \"Group Node\": one is inside the other");
    EXPECT_EQ(failure(one, ops.copy(one.instance, two.instance)),
              "cannot copy \"Group Node\" to \"Group Node\": one is inside the other");
    EXPECT_EQ(source.name, "Source");
    EXPECT_EQ(luminosityOf(surface), 8);
}

TEST_F(ModuleGroups, ReportTheErrorsOfTheirNetworks) {
    Surface surface("Clay");
    HostNode &source = nest(surface, 8);
    testNode(source).initError = "no start";
    EXPECT_EQ(messageOf([&] { surface.init(kInitRender); }),
              "surface \"Clay\": node \"One\": node \"Two\": node \"Three\": node \"Source\": no start");
    testNode(source).initError = nullptr;
    testNode(source).newTimeError = "no frame";
    surface.init(kInitRender);
    EXPECT_EQ(messageOf([&] { surface.newTime(1, 0); }),
              "surface \"Clay\": node \"One\": node \"Two\": node \"Three\": node \"Source\": no frame");
    surface.cleanup();
}

TEST_F(ModuleGroups, AreLimitedInDepth) {
    Surface surface("Clay");
    Network *at = &surface.network();
    for (int i = 0; i < kDeepestNesting; ++i) at = &inside(addModuleGroup(*at, "Group"));
    EXPECT_EQ(messageOf([&] { addModuleGroup(*at, "More"); }),
              "cannot make the node \"More\": networks cannot be nested deeper than 16");
}

} // namespace
} // namespace velm::host::test
