// Sqrt: the class and its operation.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <cmath>
#include <limits>

namespace velm::plugin {
namespace {

const NodeFacts kFacts = {
    .name = "Sqrt",
    .menu = "Velm's Nodes/Math",
    .activate = Sqrt_Activate,
    .interface = Sqrt_Interface,
    .parms = {{"Input", 16, {1}}},
    .inputs = {"In 2"},
    .outputs = {"Out 2"},
    .panel = {{0x8001, "Input", "float-env", "float-env", "Input", "In"}},
    .saved = {"parm Input"},
};
VELM_NODE_WITH_PANEL(Sqrt, kFacts);

class Sqrt : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Sqrt"};
    ShadingSample sample = plainSample();
};

TEST_F(Sqrt, IsOneByDefault) { EXPECT_EQ(node.scalar("Out", sample), 1); }

TEST_F(Sqrt, GivesTheRootOfTheMagnitude) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double known[][2] = {{4, 2},
                               {-9, 3},
                               {0, 0},
                               {2, 1.4142135623730951},
                               {-2.25, 1.5},
                               {1e300, 1e150},
                               {-1e-300, 1e-150},
                               {infinity, infinity},
                               {-infinity, infinity}};
    for (const auto &[operand, root] : known) {
        node.set("Input", operand);
        EXPECT_EQ(node.scalar("Out", sample), root) << operand;
    }
    node.set("Input", -0.0);
    EXPECT_FALSE(std::signbit(node.scalar("Out", sample)));
    node.set("Input", std::nan(""));
    EXPECT_TRUE(std::isnan(node.scalar("Out", sample)));
}

TEST_F(Sqrt, AConnectionCountsForItsSampleOnly) {
    node.set("Input", 16);
    node.connect("In", 25.0);
    EXPECT_EQ(node.scalar("Out", sample), 5);
    node.disconnect("In");
    EXPECT_EQ(node.scalar("Out", sample), 4);
}

TEST_F(Sqrt, ReadsItsInputOnce) {
    host.logsEvaluation = true;
    EXPECT_EQ(node.evaluate("Out", sample).timesSet, 1);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate In", "setValue"}));
}

TEST_F(Sqrt, FollowsItsFrames) {
    node.parm("Input").overTime = [](double time, double *value) { *value = time * time; };
    for (const double time : {0.5, 3.0}) {
        node.render.newTime(node.instance, 0, time);
        EXPECT_EQ(node.scalar("Out", sample), time);
    }
    Sqrt_get_vpValues(node.instance, 7.0);
    EXPECT_EQ(node.scalar("Out", sample), 7);
}

TEST_F(Sqrt, ACopyShowsItsValueFromTheNextFrame) {
    node.set("Input", 9);
    TestNode copy(host, "Velm Sqrt", "copy");
    ASSERT_EQ(copy.ops.copy(copy.instance, node.instance), nullptr);
    EXPECT_EQ(copy.scalar("Out", sample), 1);
    copy.render.newTime(copy.instance, 0, 0.0);
    EXPECT_EQ(copy.scalar("Out", sample), 3);
}

TEST_F(Sqrt, LoadingReadsTheValueAtTheStart) {
    RecordedState state;
    state.parm({49});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(node.scalar("Out", sample), 7);
    host.parmsLoaded = 0;
    host.failingLoad = 0;
    node.parm("Input").value[0] = 64;
    EXPECT_EQ(node.ops.load(node.instance, state.load()), FakeHost::kLoadError);
    EXPECT_EQ(node.scalar("Out", sample), 7) << "an error leaves the stored value";
}

TEST_F(Sqrt, CreatesParametersAsTheHostWantsThem) {
    HostChannelGroup group = {.name = "group", .parent = nullptr};
    const double value = 6;
    const HostVParm *parm = Sqrt_create_vpenv(kParmFloat, "Extra", &group, &value);
    ASSERT_NE(parm, nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"createParm 16 -1", "setUpParm Extra in group", "setParm Extra 6"}));
    host.failingParms = {host.parmsAsked};
    EXPECT_EQ(Sqrt_create_vpenv(kParmFloat, "Extra", &group, &value), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"createParm 16 -1"}));
}

TEST_F(Sqrt, ThePanelIsPlain) {
    const HostHint *hints = node.panel()->hints;
    EXPECT_EQ(hintsOf(hints).size(), 4u) << "notifications, a control and its label";
    EXPECT_EQ(hintsWith(kHintEnable, hints).size(), 0u);
}

} // namespace
} // namespace velm::plugin
