// Exponential Decay of a number and of a colour: the classes, and their results.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <cmath>
#include <limits>

namespace velm::plugin {
namespace {

const NodeFacts kScalarFacts = {
    .name = "Exponential Decay (Scalar)",
    .menu = "Velm's Nodes/Math",
    .activate = ExpDecayScalar_Activate,
    .interface = ExpDecayScalar_Interface,
    .parms = {{"Distance", 48, {1}}, {"Nominal Distance", 48, {1}}, {"Scalar", 16, {2}}},
    .inputs = {"Distance 2", "Nominal Distance 2", "Scalar 2"},
    .outputs = {"Scalar 2"},
    .panel = {{0x8001, "Distance", "distance-env", "distance-env", "Distance", "Distance"},
              {0x8002, "Nominal Distance", "distance-env", "distance-env", "Nominal Distance", "Nominal Distance"},
              {0x8003, "Scalar", "float-env", "float-env", "Scalar", "Scalar"},
              {0x8004, "Clamp", "iBoolean", "integer", nullptr, nullptr, 1}},
    .saved = {"I2 1", "parm Distance", "parm Nominal Distance", "parm Scalar"},
};
VELM_NODE_WITH_PANEL(ExponentialDecayScalar, kScalarFacts);

constexpr double kGrey = 0.78431;
const NodeFacts kColourFacts = {
    .name = "Exponential Decay (Color)",
    .menu = "Velm's Nodes/Math",
    .activate = ExpDecayColor_Activate,
    .interface = ExpDecayColor_Interface,
    .parms = {{"Distance", 48, {1}}, {"Nominal Distance", 48, {1}}, {"Color", 81, {kGrey, kGrey, kGrey}}},
    .inputs = {"Distance 2", "Nominal Distance 2", "Color 1"},
    .outputs = {"Color 1"},
    .panel = {{0x8001, "Distance", "distance-env", "distance-env", "Distance", "Distance"},
              {0x8002, "Nominal Distance", "distance-env", "distance-env", "Nominal Distance", "Nominal Distance"},
              {0x8003, "Color", "color-env", "color-env", "Color", "Color"},
              {0x8004, "Clamp", "iBoolean", "integer", nullptr, nullptr, 1}},
    .saved = {"I2 1", "parm Distance", "parm Nominal Distance", "parm Color"},
};
VELM_NODE_WITH_PANEL(ExponentialDecayColour, kColourFacts);

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Case {
    const char *what;
    double distance, nominal, quantity; // of every component
    double clamped, unclamped;
};

// Equal except for the last places of a power.
void expectNear(double actual, double expected, const char *what) {
    if (std::isinf(expected)) {
        EXPECT_EQ(actual, expected) << what;
    } else
        EXPECT_NEAR(actual, expected, 1e-12 * std::fabs(expected)) << what;
}

class ExponentialDecay : public testing::Test {
  protected:
    FakeHost host;
    TestNode scalar{host, "Velm Exponential Decay (Scalar)", "scalar"};
    TestNode colour{host, "Velm Exponential Decay (Color)", "colour"};
    ShadingSample sample = plainSample();

    static void setDistances(TestNode &node, const Case &row, int clamp) {
        node.set("Distance", row.distance);
        node.set("Nominal Distance", row.nominal);
        node.set(0x8004, clamp);
    }
};

TEST_F(ExponentialDecay, OfANumberHalvesByDefault) { EXPECT_EQ(scalar.scalar("Scalar", sample), 0.5); }

TEST_F(ExponentialDecay, OfANumberDividesByItPerNominalDistance) {
    const Case cases[] = {
        {"no distance", 0, 1, 2, 1, 1},
        {"three nominal distances", 6, 2, 2, 0.125, 0.125},
        {"half of one", 1, 2, 4, 0.5, 0.5},
        {"backwards", -1, 1, 2, 1, 2},
        {"growth", 1, 1, 0.5, 1, 2},
        {"a little growth", 1, 1, 0.9996, 1, 1 / 0.9996},
        {"no nominal distance", 1, 0, 2, 0, 0},
        {"no nominal distance, a small one", 1e-12, 0, 2, 0.5, 0.5},
        {"no nominal distance, a negative zero", 1e-12, -0.0, 2, 0.5, 0.5},
        {"the nominal distance a NaN", 2e-12, kNan, 2, 0.25, 0.25},
        {"a nominal distance so small that there are infinitely many", 1e-310, 1e-310, 2, 0, 0},
        {"no distance, infinitely many times: a NaN power", 0, 1e-310, 2, 1, 1e12},
        {"a power so small that one over it is infinite", 2, 1, 1e-155, 1, kInfinity},
        {"a number of zero", 1, 1, 0, 1, 1e12},
        {"a zero power by size", 5000, 1, 1e-300, 1, 1e12},
        {"a NaN power: the root of a negative", 0.5, 1, -4, 1, 1e12},
        {"a negative power", 1, 1, -4, 0, -0.25},
        {"a NaN", 1, 1, kNan, 1, 1e12},
        {"a distance that is a NaN", kNan, 1, 2, 1, 1e12},
        {"an infinite number", 1, 1, kInfinity, 0, 0},
        {"zero over a negative distance", -1, 1, 0, 0, 0},
    };
    for (const Case &row : cases)
        for (const int clamp : {0, 1, -5}) {
            setDistances(scalar, row, clamp);
            scalar.set("Scalar", row.quantity);
            expectNear(scalar.scalar("Scalar", sample), clamp ? row.clamped : row.unclamped, row.what);
        }
}

TEST_F(ExponentialDecay, OfAColourIsTheColourByDefault) {
    const HostNodeValue value = colour.evaluate("Color", sample);
    for (const double component : value.numbers) EXPECT_NEAR(component, kGrey, 1e-15);
}

TEST_F(ExponentialDecay, OfAColourKeepsItPerNominalDistance) {
    const Case cases[] = {
        {"two nominal distances", 2, 1, kGrey, kGrey * kGrey, kGrey * kGrey},
        {"half of one", 1, 2, 0.25, 0.5, 0.5},
        {"no distance", 0, 1, 0.3, 1, 1},
        {"backwards", -1, 1, 0.5, 1, 2},
        {"more than white", 2, 1, 2, 1, 4},
        {"black", 1, 1, 0, 0, 0},
        {"black over a long way", 3, 1, 0, 0, 0},
        {"so little light that one over it is infinite", 0.5, 1, 1e-310, 0, 0},
        {"black backwards: a zero power", -1, 1, 0, 1, 1e12},
        {"an infinite light: a zero power", 1, 1, kInfinity, 1, 1e12},
        {"a negative component", 1, 1, -0.5, 0, -0.5},
        {"the root of a negative component", 0.5, 1, -0.5, 1, 1e12},
        {"a NaN", 1, 1, kNan, 1, 1e12},
        {"no nominal distance", 1, 0, 0.5, 0, 0},
        {"the nominal distance a NaN", 2e-12, kNan, 0.5, 0.25, 0.25},
    };
    for (const Case &row : cases)
        for (const int clamp : {0, 1}) {
            setDistances(colour, row, clamp);
            colour.set("Color", row.quantity, row.quantity, row.quantity);
            const HostNodeValue value = colour.evaluate("Color", sample);
            for (const double component : value.numbers)
                expectNear(component, clamp ? row.clamped : row.unclamped, row.what);
        }
}

TEST_F(ExponentialDecay, ColoursDecayByComponent) {
    colour.set("Distance", 2);
    colour.set("Color", 0.5, 0, 3);
    const HostNodeValue value = colour.evaluate("Color", sample);
    EXPECT_EQ(value.numbers[0], 0.25);
    EXPECT_EQ(value.numbers[1], 0);
    EXPECT_EQ(value.numbers[2], 1);
}

TEST_F(ExponentialDecay, AConnectionCountsForItsSampleOnly) {
    scalar.connect("Distance", 4.0);
    scalar.connect("Nominal Distance", 2.0);
    scalar.connect("Scalar", 3.0);
    EXPECT_NEAR(scalar.scalar("Scalar", sample), 1.0 / 9, 1e-15);
    for (const char *input : {"Distance", "Nominal Distance", "Scalar"}) scalar.disconnect(input);
    EXPECT_EQ(scalar.scalar("Scalar", sample), 0.5);
    colour.connect("Color", 1, 0.5, 0.25);
    EXPECT_EQ(colour.evaluate("Color", sample).numbers[2], 0.25);
    colour.disconnect("Color");
    EXPECT_NEAR(colour.evaluate("Color", sample).numbers[2], kGrey, 1e-15);
}

TEST_F(ExponentialDecay, ReadsItsInputsInOrderOnceEach) {
    host.logsEvaluation = true;
    scalar.evaluate("Scalar", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Distance", "evaluate Nominal Distance", "evaluate Scalar", "setValue"}));
    colour.evaluate("Color", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Distance", "evaluate Nominal Distance", "evaluate Color", "setValue"}));
}

TEST_F(ExponentialDecay, FollowsItsFrames) {
    scalar.parm("Distance").overTime = [](double time, double *value) { *value = time; };
    scalar.render.newTime(scalar.instance, 60, 2.0);
    EXPECT_EQ(scalar.scalar("Scalar", sample), 0.25);
    ExpDecayScalar_get_vpValues(scalar.instance, 3.0);
    EXPECT_EQ(scalar.scalar("Scalar", sample), 0.125);
    colour.parm("Color").overTime = [](double time, double *value) { value[0] = value[1] = value[2] = time / 4; };
    colour.render.newTime(colour.instance, 60, 2.0);
    EXPECT_EQ(colour.evaluate("Color", sample).numbers[1], 0.5);
    ExpDecayColor_get_vpValues(colour.instance, 1.0);
    EXPECT_EQ(colour.evaluate("Color", sample).numbers[1], 0.25);
}

TEST_F(ExponentialDecay, LoadingReadsTheValuesAtTheStart) {
    RecordedState numbers, colours;
    numbers.integer(0).parm({2}).parm({1}).parm({0.5});
    EXPECT_EQ(scalar.ops.load(scalar.instance, numbers.load()), nullptr);
    EXPECT_EQ(scalar.scalar("Scalar", sample), 4);
    colours.integer(0).parm({1}).parm({1}).parm({2, 3, 4});
    EXPECT_EQ(colour.ops.load(colour.instance, colours.load()), nullptr);
    expectNear(colour.evaluate("Color", sample).numbers[2], 4, "not clamped");
}

TEST_F(ExponentialDecay, ThePanelsArePlain) {
    for (TestNode *node : {&scalar, &colour})
        EXPECT_EQ(hintsOf(node->panel()->hints).size(), 10u) << "notifications, four controls and their labels";
}

} // namespace
} // namespace velm::plugin
