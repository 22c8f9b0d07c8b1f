// Ambient Occlusion as a node: its parameters, inputs and outputs, its defaults, saving and loading, and the order in
// which it reads its inputs.
#include "random/random.h"
#include "tests/module/recorded_state.h"
#include "tests/nodes/occlusion_fixture.h"

#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

struct Parm {
    const char *channel;
    int type;
    std::vector<double> initial;
};
const Parm kParms[] = {
    {.channel = "Jitter Angle", .type = 64, .initial = {0.3490658503988659}},
    {.channel = "Cone Angle", .type = 64, .initial = {1.5707963267948966}},
    {.channel = "Max", .type = 48, .initial = {5}},
    {.channel = "Shift", .type = 16, .initial = {0}},
    {.channel = "Low", .type = 16, .initial = {0}},
    {.channel = "High", .type = 16, .initial = {1}},
    {.channel = "Offset", .type = 48, .initial = {0}},
    {.channel = "Srf Color", .type = 81, .initial = {1, 1, 1}},
    {.channel = "Srf Brightness", .type = 32, .initial = {1}},
    {.channel = "Bg Color", .type = 81, .initial = {1, 1, 1}},
    {.channel = "Bg Brightness", .type = 32, .initial = {1}},
    {.channel = "Occ Color", .type = 81, .initial = {0, 0, 0}},
    {.channel = "Occ Brightness", .type = 32, .initial = {1}},
    {.channel = "Limit Color", .type = 81, .initial = {0, 0, 0}},
    {.channel = "Limit Brightness", .type = 32, .initial = {1}},
};

struct Integer {
    unsigned int control;
    int initial;
};
// In saved order.
constexpr Integer kIntegers[] = {
    {.control = kMode, .initial = 0},          {.control = kSamples, .initial = 27},
    {.control = kPolar1, .initial = 3},        {.control = kPolar2, .initial = 9},
    {.control = kRanged, .initial = 1},        {.control = kClampLow, .initial = 0},
    {.control = kClampHigh, .initial = 0},     {.control = kSampleDepth, .initial = 0},
    {.control = kSurfaceMode, .initial = 0},   {.control = kBackgroundMode, .initial = 0},
    {.control = kOcclusionMode, .initial = 0}, {.control = kLimitMode, .initial = 0},
};

Lines parmLines(const char *prefix, const char *suffix = "") {
    Lines lines;
    for (const Parm &parm : kParms) lines.push_back(std::string(prefix) + parm.channel + suffix);
    return lines;
}

class AmbientOcclusionNode : public OcclusionNode {};

TEST_F(AmbientOcclusionNode, HasItsInputsInOrder) {
    EXPECT_EQ(node.inputs(), (Lines{"Samples 4",
                                    "Polar 1 4",
                                    "Polar 2 4",
                                    "Jitter Angle 2",
                                    "Cone Angle 2",
                                    "Max 2",
                                    "Shift 2",
                                    "Low 2",
                                    "High 2",
                                    "Offset 2",
                                    "Sample Depth 4",
                                    "Srf Color 1",
                                    "Srf Brightness 2",
                                    "Bg Color 1",
                                    "Bg Brightness 2",
                                    "Occ Color 1",
                                    "Occ Brightness 2",
                                    "Limit Color 1",
                                    "Limit Brightness 2",
                                    "Function 5",
                                    "Normal 3"}));
    EXPECT_EQ(node.outputs(), (Lines{"Color 1", "Scalar 2"}));
}

TEST_F(AmbientOcclusionNode, CreatesItsParametersInOrder) {
    ASSERT_EQ(host.parms.size(), std::size(kParms));
    for (size_t i = 0; i < std::size(kParms); ++i) {
        const HostVParm &parm = host.parms[i];
        EXPECT_EQ(parm.channel, kParms[i].channel);
        EXPECT_EQ(parm.type, kParms[i].type) << parm.channel;
        EXPECT_EQ(parm.subtype, -1);
        EXPECT_EQ(parm.group->name, "Ambient Occlusion");
        EXPECT_EQ(std::vector<double>(parm.value, parm.value + kParms[i].initial.size()), kParms[i].initial)
            << parm.channel;
    }
}

TEST_F(AmbientOcclusionNode, SetsItsColourAndLeavesThePreviewAlone) {
    const char *error = nullptr;
    void *other = node.ops.create(node.ops.priv, &host.addNode("other"), &error);
    const Lines log = host.takeLog();
    ASSERT_GE(log.size(), 3u);
    EXPECT_EQ(log[0], "setColour 164 50 10");
    EXPECT_EQ(log[1], "channelGroup");
    EXPECT_EQ(log[2], "createGroup Ambient Occlusion in other");
    node.ops.destroy(other);
}

TEST_F(AmbientOcclusionNode, StartsWithItsDefaults) {
    for (const Integer &integer : kIntegers) EXPECT_EQ(node.integer(integer.control), integer.initial);
}

TEST_F(AmbientOcclusionNode, EachCreationRestartsTheRandomStream) {
    for (int i = 0; i < 2; ++i) {
        init_genrand(99);
        genrand_int32();
        TestNode another(host, "Velm Ambient Occlusion");
        EXPECT_EQ(genrand_int32(), 2365658986u);
    }
}

TEST_F(AmbientOcclusionNode, NothingElseTouchesIt) {
    init_genrand(99);
    genrand_int32();
    const uint32_t second = genrand_int32();
    init_genrand(99);
    genrand_int32();
    RecordedState state;
    node.ops.save(node.instance, state.save());
    node.ops.load(node.instance, state.load());
    node.render.init(node.instance, kInitRender);
    node.render.newTime(node.instance, 0, 0);
    node.render.cleanup(node.instance);
    node.panel();
    EXPECT_EQ(genrand_int32(), second);
}

TEST_F(AmbientOcclusionNode, TheStartAndTheEndOfARenderDoNothing) {
    EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr);
    node.render.cleanup(node.instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(AmbientOcclusionNode, AFrameReadsAllItsParametersInOrder) {
    EXPECT_EQ(node.render.newTime(node.instance, 3, 0.125), nullptr);
    EXPECT_EQ(host.takeLog(), parmLines("getParm ", " at 0.125"));
}

// ---- Files ----

TEST_F(AmbientOcclusionNode, WritesTwelveIntegersThenItsParameters) {
    Lines expected;
    for (size_t i = 0; i < std::size(kIntegers); ++i) {
        const int value = static_cast<int>(i) * 7 - 3;
        node.set(kIntegers[i].control, value);
        expected.push_back("I2 " + std::to_string(value));
    }
    for (const std::string &line : parmLines("parm ")) expected.push_back(line);
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), expected);
}

TEST_F(AmbientOcclusionNode, ReadsTheSameAndThenItsValues) {
    for (size_t i = 0; i < std::size(kIntegers); ++i) node.set(kIntegers[i].control, 40000 + static_cast<int>(i));
    node.set("Limit Color", 0.1, 0.2, 0.3);
    node.set("Cone Angle", 0.5);
    RecordedState state;
    ASSERT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    TestNode other(host, "Velm Ambient Occlusion", "other");
    EXPECT_EQ(other.ops.load(other.instance, state.load()), nullptr);
    Lines expected = parmLines("loadParm ");
    for (const std::string &line : parmLines("getParm ", " at 0")) expected.push_back(line);
    EXPECT_EQ(host.takeLog(), expected);
    for (size_t i = 0; i < std::size(kIntegers); ++i)
        EXPECT_EQ(other.integer(kIntegers[i].control), static_cast<int>(i) - 25536) << "sixteen bits, with their sign";
    EXPECT_EQ(other.parm("Limit Color").value[2], 0.3);
    EXPECT_EQ(other.parm("Cone Angle").value[0], 0.5);
}

TEST_F(AmbientOcclusionNode, StopsAtTheFirstError) {
    RecordedState state;
    host.failingSave = 9;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
    EXPECT_EQ(state.entries.size(), 12u + 9u);
    host.failingLoad = 14;
    host.takeLog();
    RecordedState empty;
    EXPECT_EQ(node.ops.load(node.instance, empty.load()), FakeHost::kLoadError);
    EXPECT_EQ(host.takeLog(), parmLines("loadParm ")) << "and reads no values";
}

TEST_F(AmbientOcclusionNode, CopiesItsIntegersAndItsParameters) {
    for (size_t i = 0; i < std::size(kIntegers); ++i) node.set(kIntegers[i].control, 90000 + static_cast<int>(i));
    TestNode other(host, "Velm Ambient Occlusion", "other");
    EXPECT_EQ(other.ops.copy(other.instance, node.instance), nullptr);
    Lines expected;
    for (const Parm &parm : kParms)
        expected.push_back("copyParm other/" + std::string(parm.channel) + " <- node/" + parm.channel);
    EXPECT_EQ(host.takeLog(), expected);
    for (size_t i = 0; i < std::size(kIntegers); ++i)
        EXPECT_EQ(other.integer(kIntegers[i].control), 90000 + static_cast<int>(i));
}

TEST_F(AmbientOcclusionNode, DestroysAllItsParameters) {
    const char *error = nullptr;
    void *other = node.ops.create(node.ops.priv, &host.addNode("other"), &error);
    host.takeLog();
    node.ops.destroy(other);
    EXPECT_EQ(host.takeLog(), parmLines("destroyParm "));
}

// ---- The order of reading ----

const Lines kResolved = {"evaluate Cone Angle",
                         "evaluate Max",
                         "evaluate Shift",
                         "evaluate Low",
                         "evaluate High",
                         "evaluate Offset",
                         "evaluate Sample Depth",
                         "evaluate Srf Color",
                         "evaluate Srf Brightness",
                         "evaluate Bg Color",
                         "evaluate Bg Brightness",
                         "evaluate Occ Color",
                         "evaluate Occ Brightness",
                         "evaluate Limit Color",
                         "evaluate Limit Brightness",
                         "evaluate Normal"};

Lines withTail(std::initializer_list<const char *> tail) {
    Lines lines = kResolved;
    lines.insert(lines.end(), tail.begin(), tail.end());
    return lines;
}

TEST_F(AmbientOcclusionNode, ReadsItsInputsInOrder) {
    host.logsEvaluation = true;
    node.set(kSamples, 2);
    for (const char *output : {"Scalar", "Color"}) {
        EXPECT_EQ(node.evaluate(output, sample).timesSet, 1);
        EXPECT_EQ(host.takeLog(), withTail({"evaluate Samples", "evaluate Function", "evaluate Function", "setValue"}));
    }
    node.set(kMode, kPolar);
    node.set(kPolar1, 1);
    scalar();
    EXPECT_EQ(host.takeLog(), withTail({"evaluate Polar 1", "evaluate Polar 2", "evaluate Jitter Angle",
                                        "evaluate Function", "setValue"}));
}

TEST_F(AmbientOcclusionNode, ReadsNoInputForAShadowRay) {
    host.logsEvaluation = true;
    sample.rayFlags = kRayShadow;
    scalar();
    EXPECT_EQ(host.takeLog(), (Lines{"setValue"}));
}

TEST_F(AmbientOcclusionNode, ReadsNoSamplingInputForTheLimit) {
    host.logsEvaluation = true;
    sample.rayFlags = kRaySampled;
    sample.rayDepth = 1;
    scalar();
    EXPECT_EQ(host.takeLog(), withTail({"setValue"}));
}

} // namespace
} // namespace velm::plugin
