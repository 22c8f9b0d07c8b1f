// RayShade: the class, and the ray that it sends.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "tests/module/fake_scene.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <array>
#include <cstring>
#include <thread>

namespace velm::plugin {
namespace {

const NodeFacts kFacts = {
    .name = "RayShade",
    .menu = "Velm's Nodes/Surfacing",
    .activate = RayShade_Activate,
    .interface = RayShade_Interface,
    .parms = {{"Position", 17, {0, 0, 0}}, {"Direction", 17, {0, 0, 0}}},
    .inputs = {"Position 3", "Direction 3"},
    .outputs = {"Color 1", "Length 2"},
    .panel = {{0x8001, "Position", "distance3-env", "distance3-env", "Position", "Position"},
              {0x8002, "Direction", "float3-env", "float3-env", "Direction", "Direction"}},
    .saved = {"parm Position", "parm Direction"},
};
VELM_NODE_WITH_PANEL(RayShade, kFacts);

using Vector = std::array<double, 3>;

Vector vectorOf(const HostNodeValue &value) { return {value.numbers[0], value.numbers[1], value.numbers[2]}; }

class RayShade : public testing::Test {
  protected:
    FakeHost host;
    FakeRays rays;
    TestNode node{host, "Velm RayShade"};
    ShadingSample sample = rays.sample();
};

TEST_F(RayShade, GivesTheColourAndTheDistanceOfTheHit) {
    rays.colour = {{0.25, 0.5, 2}};
    rays.distance = 12.5;
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{0.25, 0.5, 2}));
    EXPECT_EQ(node.scalar("Length", sample), 12.5);
}

TEST_F(RayShade, GivesTheDistanceForWhateverIsNotTheColour) {
    rays.distance = 12.5;
    EXPECT_EQ(node.evaluateStranger(kConnectScalar, sample).numbers[0], 12.5);
}

TEST_F(RayShade, FiresARayForEachOutputThatIsRead) {
    EXPECT_EQ(node.evaluate("Length", sample).timesSet, 1);
    EXPECT_EQ(rays.shades.size(), 1u);
    EXPECT_EQ(node.evaluate("Color", sample).timesSet, 1);
    EXPECT_EQ(rays.shades.size(), 2u);
    node.evaluate("Length", sample);
    EXPECT_EQ(rays.shades.size(), 3u);
    EXPECT_TRUE(rays.traces.empty());
}

TEST_F(RayShade, HandsOnWhatItIsGivenAsItIs) {
    node.set("Position", 1, 2, 3);
    node.set("Direction", 0, -30, 40); // not of unit length
    sample.position[0] = 99;
    node.evaluate("Color", sample);
    ASSERT_EQ(rays.shades.size(), 1u);
    EXPECT_EQ(rays.shades[0].position, (Vector{1, 2, 3}));
    EXPECT_EQ(rays.shades[0].direction, (Vector{0, -30, 40}));
    EXPECT_EQ(rays.shades[0].colour, (Vector{0, 0, 0})) << "black to begin with";
}

TEST_F(RayShade, FiresWithoutADirectionToo) {
    rays.distance = 3;
    EXPECT_EQ(node.scalar("Length", sample), 3) << "what the host makes of it";
    ASSERT_EQ(rays.shades.size(), 1u);
    EXPECT_EQ(rays.shades[0].direction, (Vector{0, 0, 0}));
}

TEST_F(RayShade, AMissIsBlackAndWhatTheHostGives) {
    rays.distance = HOST_RAY_MISS;
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{0, 0, 0}));
    EXPECT_EQ(node.scalar("Length", sample), -1);
}

TEST_F(RayShade, WithoutRayFunctionsEveryRayMisses) {
    sample.rayShade = nullptr;
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{0, 0, 0}));
    EXPECT_EQ(node.scalar("Length", sample), -1);
}

TEST_F(RayShade, HasRoomForTheRecordOfALaterHost) {
    sample.rayShade = [](const double *, const double *, HostRayHit *hit) {
        std::memset(static_cast<void *>(hit), 0, kRayHitReserve);
        hit->colour[1] = 0.5;
        return 4.0;
    };
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{0, 0.5, 0}));
}

TEST_F(RayShade, AConnectionCountsForItsSampleOnly) {
    node.set("Direction", 1, 0, 0);
    node.connect("Direction", 0, 5, 0);
    node.connect("Position", 7, 8, 9);
    node.evaluate("Color", sample);
    node.disconnect("Direction");
    node.disconnect("Position");
    node.evaluate("Color", sample);
    ASSERT_EQ(rays.shades.size(), 2u);
    EXPECT_EQ(rays.shades[0].direction, (Vector{0, 5, 0}));
    EXPECT_EQ(rays.shades[0].position, (Vector{7, 8, 9}));
    EXPECT_EQ(rays.shades[1].direction, (Vector{1, 0, 0}));
    EXPECT_EQ(rays.shades[1].position, (Vector{0, 0, 0}));
}

TEST_F(RayShade, ReadsItsInputsInOrderOnceEach) {
    host.logsEvaluation = true;
    node.evaluate("Color", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Position", "evaluate Direction", "setValue"}));
}

TEST_F(RayShade, FollowsItsFrames) {
    node.parm("Position").overTime = [](double time, double *value) {
        for (int i = 0; i < 3; ++i) value[i] = time + i;
    };
    node.render.newTime(node.instance, 1, 5.0);
    node.evaluate("Length", sample);
    RayShade_get_vpValues(node.instance, 6.0);
    node.evaluate("Length", sample);
    ASSERT_EQ(rays.shades.size(), 2u);
    EXPECT_EQ(rays.shades[0].position, (Vector{5, 6, 7}));
    EXPECT_EQ(rays.shades[1].position, (Vector{6, 7, 8}));
}

TEST_F(RayShade, LoadingReadsTheValuesAtTheStart) {
    RecordedState state;
    state.parm({1, 2, 3}).parm({4, 5, 6});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    node.evaluate("Length", sample);
    ASSERT_EQ(rays.shades.size(), 1u);
    EXPECT_EQ(rays.shades[0].position, (Vector{1, 2, 3}));
    EXPECT_EQ(rays.shades[0].direction, (Vector{4, 5, 6}));
}

TEST_F(RayShade, ThePanelIsPlain) {
    EXPECT_EQ(hintsOf(node.panel()->hints).size(), 6u) << "notifications, two controls and their labels";
}

TEST(RayShadeThreaded, EveryThreadHasItsOwnRay) {
    FakeHost host;
    TestNode node(host, "Velm RayShade");
    node.input("Position").source = [](ShadingSample *sample, void *value) {
        for (int i = 0; i < 3; ++i) static_cast<double *>(value)[i] = sample->pixelX + i;
    };
    std::array<int, kMaxThreads> wrong{};
    std::vector<std::thread> threads;
    for (int i = 0; i < kMaxThreads; ++i)
        threads.emplace_back([&, i] {
            ShadingSample sample = plainSample();
            sample.threadIndex = i;
            sample.rayShade = [](const double position[3], const double *, HostRayHit *hit) {
                for (int axis = 0; axis < 3; ++axis) hit->colour[axis] = 2 * position[axis];
                return position[0];
            };
            for (sample.pixelX = i * 1000; sample.pixelX < i * 1000 + 500; ++sample.pixelX) {
                const double x = sample.pixelX;
                wrong[static_cast<size_t>(i)] +=
                    vectorOf(node.evaluate("Color", sample)) != Vector{2 * x, 2 * x + 2, 2 * x + 4} ||
                    node.scalar("Length", sample) != x;
            }
        });
    for (std::thread &thread : threads) thread.join();
    for (const int count : wrong) EXPECT_EQ(count, 0);
}

} // namespace
} // namespace velm::plugin
