// Smoothstep: the class and its curve.
#include "tests/nodes/node_frame.h"

#include "module/servers.h"

#include <cmath>

namespace velm::plugin {
namespace {

const NodeFacts kFacts = {
    .name = "Smoothstep",
    .menu = "Velm's Nodes/Math",
    .activate = Smoothstep_Activate,
    .interface = Smoothstep_Interface,
    .parms = {{"Input", kParmFloat, {0}}, {"Low", kParmFloat, {0}}, {"High", kParmFloat, {1}}},
    .inputs = {"Input 2", "Low 2", "High 2"}, // 2 is kConnectScalar
    .outputs = {"Out 2"},
    .panel = {{0x8001, "Input", "float-env", "float-env", "Input", "Input"},
              {0x8002, "Low", "float-env", "float-env", "Low", "Low"},
              {0x8003, "High", "float-env", "float-env", "High", "High"}},
    .saved = {"parm Input", "parm Low", "parm High"},
};
VELM_NODE_WITH_PANEL(Smoothstep, kFacts);

class Smoothstep : public testing::Test {
  protected:
    double at(double input) {
        node.set("Input", input);
        return node.scalar("Out", sample);
    }
    void setEdges(double low, double high) {
        node.set("Low", low);
        node.set("High", high);
    }

    FakeHost host;
    TestNode node{host, "Velm Smoothstep"};
    ShadingSample sample = plainSample();
};

TEST_F(Smoothstep, RisesBetweenItsEdgesAndIsLevelBeyond) {
    setEdges(2, 6);
    EXPECT_EQ(at(-100), 0);
    EXPECT_EQ(at(2), 0);
    EXPECT_EQ(at(3), 0.15625); // 3 / 16 - 2 / 64
    EXPECT_EQ(at(4), 0.5);
    EXPECT_EQ(at(6), 1);
    EXPECT_EQ(at(1e300), 1);
}

TEST_F(Smoothstep, FallsWhenItsEdgesAreReversed) {
    setEdges(6, 2);
    EXPECT_EQ(at(1), 1);
    EXPECT_EQ(at(5), 0.15625);
    EXPECT_EQ(at(7), 0);
}

TEST_F(Smoothstep, IsAStepWhereItsEdgesCoincide) {
    setEdges(3, 3);
    EXPECT_EQ(at(std::nextafter(3, 0)), 0);
    EXPECT_EQ(at(3), 0);
    EXPECT_EQ(at(std::nextafter(3, 4)), 1);
}

TEST_F(Smoothstep, GivesNumbersOnly) { EXPECT_EQ(at(std::nan("")), 0); }

} // namespace
} // namespace velm::plugin
