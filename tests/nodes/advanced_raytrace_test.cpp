// Advanced RayTrace: the class, the ray that it traces, and its tagged blocks.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "tests/module/fake_scene.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <algorithm>
#include <array>
#include <thread>

namespace velm::plugin {
namespace {

constexpr double kGrey = 0.78431;
const NodeFacts kFacts = {
    .name = "Advanced RayTrace",
    .menu = "Velm's Nodes/Surfacing",
    .activate = AdvRayTrace_Activate,
    .interface = AdvRayTrace_Interface,
    .parms = {{"Position", 17, {0, 0, 0}},
              {"Direction", 17, {0, 0, 0}},
              {"Refraction Index", 16, {1}},
              {"Color", 81, {kGrey, kGrey, kGrey}}},
    .inputs = {"Position 3", "Direction 3", "IOR 2", "Color 1"},
    .outputs = {"Color 1", "Length 2"},
    .panel = {{0x8001, "Position", "distance3-env", "distance3-env", "Position", "Position"},
              {0x8002, "Direction", "float3-env", "float3-env", "Direction", "Direction"},
              {0x8003, "Mode", "iPopTransform", "integer"},
              {0x8004, "Refraction Index", "float-env", "float-env", "Refraction Index", "IOR"},
              {0x8005, "Color", "color-env", "color-env", "Color", "Color"},
              {0x8006, "Backshade", "iBoolean", "integer"},
              {0x8007, "Backdrop", "iBoolean", "integer"},
              {0x8008, "Object", "iBoolean", "integer"},
              {0x8009, "Sampled Ray", "iBoolean", "integer"},
              {0x800a, "No Polygon", "iBoolean", "integer"}},
    .saved = {"begin RPOS Position leaf",
              "parm Position",
              "end",
              "begin RDIR Direction leaf",
              "parm Direction",
              "end",
              "begin MODE Mode leaf",
              "I2 0",
              "end",
              "begin RIOR IOR leaf",
              "parm Refraction Index",
              "end",
              "begin COLO Color leaf",
              "parm Color",
              "end",
              "begin BSHA Backshade leaf",
              "I2 0",
              "end",
              "begin BDRO Backdrop leaf",
              "I2 0",
              "end",
              "begin OBJE Object leaf",
              "I2 0",
              "end",
              "begin SRAY Sampled Ray leaf",
              "I2 0",
              "end",
              "begin POLY No Polygon leaf",
              "I2 0",
              "end"},
};
VELM_NODE_WITH_PANEL(AdvancedRayTrace, kFacts);

using Vector = std::array<double, 3>;

Vector vectorOf(const HostNodeValue &value) { return {value.numbers[0], value.numbers[1], value.numbers[2]}; }

enum Id : unsigned int { // block identifiers
    kRpos = 0x52504f53,
    kRdir = 0x52444952,
    kMode = 0x4d4f4445,
    kRior = 0x52494f52,
    kColo = 0x434f4c4f,
    kBsha = 0x42534841,
    kBdro = 0x4244524f,
    kObje = 0x4f424a45,
    kSray = 0x53524159,
    kPoly = 0x504f4c59
};

class AdvancedRayTrace : public testing::Test {
  protected:
    FakeHost host;
    FakeRays rays;
    TestNode node{host, "Velm Advanced RayTrace"};
    ShadingSample sample = rays.sample();

    // The ray that the node traces with its current settings.
    FakeRays::Call ray() {
        rays.traces.clear();
        node.evaluate("Length", sample);
        EXPECT_EQ(rays.traces.size(), 1u);
        return rays.traces.at(0);
    }
    HostError load(RecordedState &state) {
        host.takeLog();
        return node.ops.load(node.instance, state.load());
    }
};

// ---- The ray ----

TEST_F(AdvancedRayTrace, GivesWhatTheTraceLeaves) {
    rays.colour = {{0.25, 0.5, 2}};
    rays.distance = 12.5;
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{0.25, 0.5, 2}));
    EXPECT_EQ(node.scalar("Length", sample), 12.5);
}

TEST_F(AdvancedRayTrace, GivesTheDistanceForWhateverIsNotTheColour) {
    rays.distance = 12.5;
    EXPECT_EQ(node.evaluateStranger(kConnectScalar, sample).numbers[0], 12.5);
}

TEST_F(AdvancedRayTrace, TracesARayForEachOutputThatIsRead) {
    EXPECT_EQ(node.evaluate("Length", sample).timesSet, 1);
    EXPECT_EQ(rays.traces.size(), 1u);
    EXPECT_EQ(node.evaluate("Color", sample).timesSet, 1);
    EXPECT_EQ(rays.traces.size(), 2u);
    EXPECT_TRUE(rays.shades.empty());
}

TEST_F(AdvancedRayTrace, TracesItsDefaults) {
    sample.refractionIndex = 1.5;
    const FakeRays::Call traced = ray();
    EXPECT_EQ(traced.position, (Vector{0, 0, 0}));
    EXPECT_EQ(traced.direction, (Vector{0, 0, 0}));
    EXPECT_EQ(traced.colour, (Vector{kGrey, kGrey, kGrey}));
    EXPECT_EQ(traced.eta, 1) << "its own, not the sample's";
    EXPECT_EQ(traced.mode, 0u);
}

TEST_F(AdvancedRayTrace, HandsOnWhatItIsGivenAsItIs) {
    node.set("Position", 1, 2, 3);
    node.set("Direction", 0, -30, 40); // not of unit length
    node.set("Refraction Index", 1.33);
    node.set("Color", 0.1, 0.2, 7);
    const FakeRays::Call traced = ray();
    EXPECT_EQ(traced.position, (Vector{1, 2, 3}));
    EXPECT_EQ(traced.direction, (Vector{0, -30, 40}));
    EXPECT_EQ(traced.eta, 1.33);
    EXPECT_EQ(traced.colour, (Vector{0.1, 0.2, 7}));
}

TEST_F(AdvancedRayTrace, ATraceThatLeavesTheColourGivesTheOneHandedIn) {
    rays.distance = HOST_RAY_MISS;
    node.set("Color", 0.1, 0.2, 0.3);
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{0.1, 0.2, 0.3}));
    EXPECT_EQ(node.scalar("Length", sample), -1);
}

TEST_F(AdvancedRayTrace, WithoutRayFunctionsEveryRayMisses) {
    sample.rayTraceMode = nullptr;
    EXPECT_EQ(vectorOf(node.evaluate("Color", sample)), (Vector{kGrey, kGrey, kGrey}));
    EXPECT_EQ(node.scalar("Length", sample), -1);
}

TEST_F(AdvancedRayTrace, ConnectionsCountForTheirSampleOnly) {
    node.connect("Position", 1, 2, 3);
    node.connect("Direction", 4, 5, 6);
    node.connect("IOR", 2.5);
    node.connect("Color", 7, 8, 9);
    FakeRays::Call traced = ray();
    EXPECT_EQ(traced.position, (Vector{1, 2, 3}));
    EXPECT_EQ(traced.direction, (Vector{4, 5, 6}));
    EXPECT_EQ(traced.eta, 2.5);
    EXPECT_EQ(traced.colour, (Vector{7, 8, 9}));
    for (const char *input : {"Position", "Direction", "IOR", "Color"}) node.disconnect(input);
    traced = ray();
    EXPECT_EQ(traced.position, (Vector{0, 0, 0}));
    EXPECT_EQ(traced.eta, 1);
    EXPECT_EQ(traced.colour, (Vector{kGrey, kGrey, kGrey}));
}

TEST_F(AdvancedRayTrace, ReadsItsInputsInOrderOnceEach) {
    host.logsEvaluation = true;
    for (const char *output : {"Color", "Length"}) {
        node.evaluate(output, sample);
        EXPECT_EQ(host.takeLog(),
                  (Lines{"evaluate Position", "evaluate Direction", "evaluate IOR", "evaluate Color", "setValue"}));
    }
}

TEST_F(AdvancedRayTrace, TheSwitchesAreTheHighBitsOfTheMode) {
    for (unsigned int switches = 0; switches < 32; ++switches)
        for (int mode = 0; mode < 7; ++mode) {
            node.set(0x8003, mode);
            for (unsigned int bit = 0; bit < 5; ++bit) node.set(0x8006 + bit, switches & 1u << bit ? 1 : 0);
            EXPECT_EQ(ray().mode, switches << 27 | static_cast<unsigned int>(mode));
        }
    EXPECT_EQ(ray().mode, 0xf8000006u) << "all of them, and the backdrop";
}

TEST_F(AdvancedRayTrace, AnySwitchThatIsNotZeroIsOn) {
    node.set(0x8009, -2);
    EXPECT_EQ(ray().mode, 0x40000000u);
    node.set(0x8009, 2);
    EXPECT_EQ(ray().mode, 0x40000000u);
}

TEST_F(AdvancedRayTrace, FollowsItsFrames) {
    node.parm("Refraction Index").overTime = [](double time, double *value) { *value = time; };
    node.parm("Color").overTime = [](double time, double *value) { std::fill(value, value + 3, 2 * time); };
    node.render.newTime(node.instance, 1, 2.5);
    EXPECT_EQ(ray().eta, 2.5);
    AdvRayTrace_get_vpValues(node.instance, 3.5);
    EXPECT_EQ(ray().eta, 3.5);
    EXPECT_EQ(ray().colour, (Vector{7, 7, 7}));
}

// ---- Blocks ----

TEST_F(AdvancedRayTrace, ReadsItsBlocksInAnyOrder) {
    RecordedState state;
    state.begin(kPoly).integer(1).end().begin(kColo).parm({1, 2, 3}).end().begin(kBsha).integer(1).end();
    state.begin(kMode).integer(4).end().begin(kRdir).parm({7, 8, 9}).end().begin(kSray).integer(0).end();
    state.begin(kRior).parm({1.5}).end().begin(kObje).integer(1).end().begin(kRpos).parm({4, 5, 6}).end();
    state.begin(kBdro).integer(0).end();
    EXPECT_EQ(load(state), nullptr);
    const FakeRays::Call traced = ray();
    EXPECT_EQ(traced.position, (Vector{4, 5, 6}));
    EXPECT_EQ(traced.direction, (Vector{7, 8, 9}));
    EXPECT_EQ(traced.colour, (Vector{1, 2, 3}));
    EXPECT_EQ(traced.eta, 1.5);
    EXPECT_EQ(traced.mode, 0x80000000u | 0x20000000u | 0x08000000u | 4u);
}

TEST_F(AdvancedRayTrace, BlocksThatAreNotThereLeaveTheDefaults) {
    RecordedState state;
    state.begin(kMode).integer(2).end().begin(kColo).parm({1, 2, 3}).end();
    EXPECT_EQ(load(state), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"loadParm Color", "getParm Position at 0", "getParm Direction at 0",
                                     "getParm Refraction Index at 0", "getParm Color at 0"}));
    const FakeRays::Call traced = ray();
    EXPECT_EQ(traced.mode, 2u);
    EXPECT_EQ(traced.colour, (Vector{1, 2, 3}));
    EXPECT_EQ(traced.position, (Vector{0, 0, 0}));
    EXPECT_EQ(traced.eta, 1);
}

TEST_F(AdvancedRayTrace, AnEmptyFileLeavesTheDefaultsAndReadsTheValues) {
    RecordedState state;
    EXPECT_EQ(load(state), nullptr);
    EXPECT_EQ(host.takeLog().size(), 4u);
    EXPECT_EQ(ray().mode, 0u);
}

TEST_F(AdvancedRayTrace, PassesOverBlocksThatItDoesNotKnow) {
    RecordedState state;
    state.begin(0x58595a5a).integer(9).begin(kMode).integer(3).end().parm({1}).end();
    state.begin(kRior).parm({1.25}).end();
    state.begin(0x4d4f4446).integer(6).end(); // one letter differs
    state.begin(kBdro).integer(1).end();
    EXPECT_EQ(load(state), nullptr);
    EXPECT_EQ(ray().eta, 1.25);
    EXPECT_EQ(ray().mode, 0x10000000u) << "the mode inside a block that is not its own is not its own";
}

TEST_F(AdvancedRayTrace, LeavesWhatStandsBehindInABlockUnread) {
    RecordedState state;
    state.begin(kMode).integer(3).integer(9).parm({5}).end().begin(kBsha).integer(1).end();
    EXPECT_EQ(load(state), nullptr);
    EXPECT_EQ(ray().mode, 0x08000003u);
}

TEST_F(AdvancedRayTrace, ABlockThatComesAgainCountsAgain) {
    RecordedState state;
    state.begin(kMode).integer(3).end().begin(kMode).integer(5).end();
    EXPECT_EQ(load(state), nullptr);
    EXPECT_EQ(ray().mode, 5u);
}

TEST_F(AdvancedRayTrace, KeepsAModeThatTheListDoesNotHold) {
    RecordedState state;
    state.begin(kMode).integer(40000).end();
    EXPECT_EQ(load(state), nullptr);
    EXPECT_EQ(node.integer(0x8003), -25536);
    EXPECT_EQ(ray().mode, static_cast<unsigned int>(-25536)) << "handed on as it is";
}

TEST_F(AdvancedRayTrace, AParameterThatCannotBeSavedLeavesItsBlockOpen) {
    const char *const open[] = {"begin RPOS Position leaf", "begin RDIR Direction leaf", "begin RIOR IOR leaf",
                                "begin COLO Color leaf"};
    for (int failing = 0; failing < 4; ++failing) {
        RecordedState state;
        host.parmsSaved = 0;
        host.failingSave = failing;
        EXPECT_EQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
        EXPECT_EQ(state.lines().back(), open[failing]);
    }
}

TEST_F(AdvancedRayTrace, AParameterThatCannotBeLoadedLeavesItsBlockAndTheRest) {
    node.set("Position", 1, 1, 1);
    RecordedState state;
    state.begin(kRpos).parm({4, 5, 6}).end().begin(kRior).parm({3}).end().begin(kMode).integer(6).end();
    host.failingLoad = 1;
    EXPECT_EQ(load(state), FakeHost::kLoadError);
    EXPECT_EQ(host.takeLog(), (Lines{"loadParm Position", "loadParm Refraction Index"}));
    EXPECT_NE(state.take(RecordedState::Entry::Kind::parm), nullptr) << "inside the block still";
    const FakeRays::Call traced = ray();
    EXPECT_EQ(traced.mode, 0u);
    EXPECT_EQ(traced.position, (Vector{1, 1, 1})) << "values are not read anew";
}

// ---- The panel ----

TEST_F(AdvancedRayTrace, TheModesStoreTheHostsKindsOfRays) {
    const HostHint *hints = node.panel()->hints;
    const std::vector<Hint> lists = hintsWith(kHintStringList, hints),
                            transforms = hintsWith(kHintValueTransform, hints);
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(lists[0].arguments[0].word, 0x8003u);
    const char *const *text = lists[0].arguments[1].texts;
    for (const char *name : {"Distance", "Reflection", "Refraction", "Dissolve", "Shadow", "Occlusion", "Backdrop"})
        EXPECT_STREQ(*text++, name);
    EXPECT_EQ(*text, nullptr);
    ASSERT_EQ(transforms.size(), 1u);
    EXPECT_EQ(transforms[0].arguments[0].word, 0x8003u);
    ASSERT_EQ(transforms[0].arguments[1].word, 7u);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(transforms[0].arguments[2].numbers[i], i);
}

TEST_F(AdvancedRayTrace, ThePanelHasTwoTabs) {
    using Ids = std::vector<unsigned int>;
    const HostHint *hints = node.panel()->hints;
    const std::vector<Hint> groups = hintsWith(kHintGroup, hints), tabs = hintsWith(kHintTabs, hints);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].ids, (Ids{0x8001, 0x8002}));
    EXPECT_EQ(groups[1].ids, (Ids{0x8003, 0x8004, 0x8005, 0x8006, 0x8007, 0x8008, 0x8009, 0x800a}));
    ASSERT_EQ(tabs.size(), 1u);
    EXPECT_EQ(tabs[0].ids, (Ids{static_cast<unsigned int>(groups[0].arguments[0].word),
                                static_cast<unsigned int>(groups[1].arguments[0].word)}));
    const std::vector<Hint> labels = hintsWith(kHintLabel, hints);
    ASSERT_EQ(labels.size(), 12u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(labels[10 + i].arguments[0].word, groups[i].arguments[0].word);
        EXPECT_STREQ(labels[10 + i].arguments[1].text, i == 0 ? "Settings" : "Advanced");
    }
    EXPECT_EQ(limitsOf(hints), Lines{});
    EXPECT_TRUE(hintsWith(kHintEnable, hints).empty());
}

TEST(AdvancedRayTraceThreaded, EveryThreadHasItsOwnRay) {
    FakeHost host;
    TestNode node(host, "Velm Advanced RayTrace");
    node.set(0x800a, 1);
    node.input("Color").source = [](ShadingSample *sample, void *value) {
        for (int i = 0; i < 3; ++i) static_cast<double *>(value)[i] = sample->pixelX + i;
    };
    std::array<int, kMaxThreads> wrong{};
    std::vector<std::thread> threads;
    for (int i = 0; i < kMaxThreads; ++i)
        threads.emplace_back([&, i] {
            ShadingSample sample = plainSample();
            sample.threadIndex = i;
            sample.rayTraceMode = [](const double *, const double *, double colour[3], double eta, int mode) {
                const double length = colour[0] * eta;
                for (int axis = 0; axis < 3; ++axis) colour[axis] *= mode < 0 ? 2 : 3;
                return length;
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
