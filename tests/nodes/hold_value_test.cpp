// Hold Value: the class, the modes, and the values that each thread holds.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <array>
#include <cmath>
#include <limits>
#include <thread>

namespace velm::plugin {
namespace {

const NodeFacts kFacts = {
    .name = "Hold Value",
    .menu = "Velm's Nodes/Math",
    .activate = HoldValue_Activate,
    .interface = HoldValue_Interface,
    .parms = {{"Input", 16, {1}}, {"A", 16, {0}}, {"B", 16, {0}}},
    .inputs = {"Mode 4", "In 2", "A 2", "B 2"},
    .outputs = {"Out 2"},
    .panel = {{0x8001, "Mode", "iPopChoice", "integer", nullptr, "Mode", 0},
              {0x8002, "Input", "float-env", "float-env", "Input", "In"},
              {0x8003, "A", "float-env", "float-env", "A", "A"},
              {0x8004, "B", "float-env", "float-env", "B", "B"}},
    .saved = {"I2 0", "parm Input", "parm A", "parm B"},
};
VELM_NODE_WITH_PANEL(HoldValue, kFacts);

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

class HoldValue : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Hold Value"};
    ShadingSample sample = plainSample();

    void setMode(int mode) { node.set(0x8001, mode); }
    // The output for one sample with these values.
    double next(double input, double a, double b = 0) {
        node.connect("In", input), node.connect("A", a), node.connect("B", b);
        return node.scalar("Out", sample);
    }
};

TEST_F(HoldValue, GivesItsInputAtFirst) {
    EXPECT_EQ(node.scalar("Out", sample), 1) << "the default";
    EXPECT_EQ(node.scalar("Out", sample), 1);
}

TEST_F(HoldValue, TheFirstEvaluationPassesTheInputInEveryMode) {
    for (int mode = 0; mode < 8; ++mode) {
        setMode(mode);
        node.render.init(node.instance, kInitRender);
        EXPECT_EQ(next(10 + mode, 5, 5), 10 + mode);
    }
}

// Whether the node holds in each mode, for a pair of values: A and B, or in modes 0 and 1 the current and the last A.
struct Pair {
    double a, b;
    std::array<bool, 8> holds;
};

const Pair kPairs[] = {
    {.a = 2, .b = 2, .holds = {false, true, true, false, false, false, true, true}},
    {.a = 3, .b = 2, .holds = {true, false, false, true, true, false, true, false}},
    {.a = 1, .b = 2, .holds = {true, false, false, true, false, true, false, true}},
    {.a = -0.0, .b = 0, .holds = {false, true, true, false, false, false, true, true}},
    {.a = kNan, .b = 2, .holds = {false, true, true, false, false, true, false, true}},
    {.a = 2, .b = kNan, .holds = {false, true, true, false, false, true, false, true}},
    {.a = kNan, .b = kNan, .holds = {false, true, true, false, false, true, false, true}},
};

TEST_F(HoldValue, HoldsWhileTheConditionOfItsModeIsMet) {
    for (const Pair &pair : kPairs)
        for (int mode = 0; mode < 8; ++mode) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << pair.a << " and " << pair.b);
            setMode(mode);
            node.render.init(node.instance, kInitRender);
            next(100, mode < 2 ? pair.b : pair.a, pair.b);
            EXPECT_EQ(next(200, pair.a, pair.b), pair.holds[static_cast<size_t>(mode)] ? 100 : 200);
        }
}

TEST_F(HoldValue, KeepsTheFirstValueWhileTheConditionLasts) {
    setMode(2);
    EXPECT_EQ(next(7, 1, 1), 7);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(next(100 + i, i, i), 7);
    EXPECT_EQ(next(50, 1, 2), 50);
    EXPECT_EQ(next(51, 1, 1), 50) << "the value passed last";
    node.render.init(node.instance, kInitRender);
    EXPECT_EQ(next(52, 1, 1), 52);
}

TEST_F(HoldValue, FollowsTheInputAsSoonAsAStaysEqual) {
    setMode(0);
    EXPECT_EQ(next(10, 1), 10);
    EXPECT_EQ(next(11, 2), 10);
    EXPECT_EQ(next(12, 3), 10);
    EXPECT_EQ(next(13, 3), 13);
    EXPECT_EQ(next(14, 3), 14);
    EXPECT_EQ(next(15, 4), 14);
}

TEST_F(HoldValue, HoldsWhileADoesNotChange) {
    setMode(1);
    EXPECT_EQ(next(10, 1), 10);
    EXPECT_EQ(next(11, 1), 10);
    EXPECT_EQ(next(12, 2), 12);
    EXPECT_EQ(next(13, 2), 12);
}

TEST_F(HoldValue, ComparingWithBDoesNotNoteA) {
    setMode(0);
    next(10, 5);
    setMode(2);
    next(11, 6, 7); // A is 6 here, and is not stored
    setMode(0);
    EXPECT_EQ(next(12, 6), 11) << "6 differs from the 5 noted before";
    EXPECT_EQ(next(13, 6), 13) << "and is noted now";
    setMode(3);
    next(14, 9, 9);
    setMode(1);
    EXPECT_EQ(next(15, 6), 14) << "equal to what was noted";
}

TEST_F(HoldValue, TheFirstEvaluationNotesAInEveryMode) {
    for (int mode = 0; mode < 8; ++mode) {
        SCOPED_TRACE(mode);
        setMode(mode);
        node.render.init(node.instance, kInitRender);
        next(10, 5 + mode, 3);
        setMode(1);
        EXPECT_EQ(next(11, 5 + mode, 3), 10) << "unchanged since then";
        setMode(mode);
        node.render.init(node.instance, kInitRender);
        next(20, 50 + mode, 3);
        setMode(0);
        EXPECT_EQ(next(21, 5 + mode, 3), 20) << "changed since then";
    }
}

TEST_F(HoldValue, ANanIsNotedLikeAnyA) {
    setMode(0);
    next(10, 1);
    EXPECT_EQ(next(11, kNan), 11) << "counts as unchanged";
    EXPECT_EQ(next(12, 1), 12) << "and so does what comes after it";
    EXPECT_EQ(next(13, 2), 12);
}

TEST_F(HoldValue, AModeBeyondTheListIsTheNearest) {
    next(10, 1, 1);
    struct Case {
        int mode;
        double a, b, out;
    };
    // Mode 7 holds for A <= B; mode 0 holds where A changes.
    const Case cases[] = {{9, 1, 2, 10}, {9, 3, 2, 20}, {1000, 2, 2, 20}, {8, 4, 2, 20}};
    for (const Case &row : cases) {
        node.connect("Mode", row.mode);
        EXPECT_EQ(next(20, row.a, row.b), row.out) << row.mode;
    }
    for (const int mode : {-1, -3, -100000}) {
        node.render.init(node.instance, kInitRender);
        node.connect("Mode", mode);
        next(30, 1, 1);
        EXPECT_EQ(next(31, 2, 2), 30) << "changed";
        EXPECT_EQ(next(32, 2, 2), 32) << "unchanged";
    }
}

TEST_F(HoldValue, AConnectionCountsForItsSampleOnly) {
    node.set("Input", 4);
    setMode(3);
    node.connect("In", 9.0);
    EXPECT_EQ(node.scalar("Out", sample), 9);
    node.disconnect("In");
    EXPECT_EQ(node.scalar("Out", sample), 4);
    EXPECT_EQ(node.integer(0x8001), 3);
    node.connect("Mode", 2);
    node.scalar("Out", sample);
    node.disconnect("Mode");
    EXPECT_EQ(node.integer(0x8001), 3);
}

TEST_F(HoldValue, ReadsItsInputsInOrderOnceEach) {
    host.logsEvaluation = true;
    node.scalar("Out", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Mode", "evaluate In", "evaluate A", "evaluate B", "setValue"}));
}

TEST_F(HoldValue, LivesOnFromFrameToFrame) {
    setMode(2);
    next(7, 1, 1);
    node.render.newTime(node.instance, 1, 0.04);
    EXPECT_EQ(next(8, 1, 1), 7);
    node.render.cleanup(node.instance);
    EXPECT_EQ(next(9, 1, 1), 7);
}

TEST_F(HoldValue, ACopyDoesNotHoldTheSameValue) {
    setMode(2);
    next(7, 1, 1);
    TestNode copy(host, "Velm Hold Value", "copy");
    ASSERT_EQ(copy.ops.copy(copy.instance, node.instance), nullptr);
    copy.connect("In", 8.0);
    EXPECT_EQ(copy.scalar("Out", sample), 8);
}

TEST_F(HoldValue, AFrameBringsItsValues) {
    node.parm("Input").overTime = [](double time, double *value) { *value = 10 * time; };
    setMode(3);
    node.render.newTime(node.instance, 30, 1.5);
    EXPECT_EQ(node.scalar("Out", sample), 15);
    HoldValue_get_vpValues(node.instance, 2.5);
    EXPECT_EQ(node.scalar("Out", sample), 25);
}

TEST_F(HoldValue, LoadingReadsTheValuesAtTheStart) {
    setMode(3);
    RecordedState state;
    state.integer(3).parm({6}).parm({1}).parm({2});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(node.scalar("Out", sample), 6);
}

TEST_F(HoldValue, TheModesAreNamedAfterWhatTheyHoldAt) {
    const std::vector<Hint> lists = hintsWith(kHintStringList, node.panel()->hints);
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(lists[0].arguments[0].word, 0x8001u);
    const char *const expected[] = {"A Does Change",
                                    "A Does Not Change",
                                    "A Equal To B",
                                    "A Not Equal To B",
                                    "A Greater Than B",
                                    "A Less Than B",
                                    "A Greater Than Or Equal To B",
                                    "A Less Than Or Equal To B"};
    const char *const *text = lists[0].arguments[1].texts;
    for (const char *name : expected) EXPECT_STREQ(*text++, name);
    EXPECT_EQ(*text, nullptr);
}

TEST_F(HoldValue, BIsEnabledWhereAIsComparedWithIt) {
    const HostHint *hints = node.panel()->hints;
    const std::vector<Hint> enabling = hintsWith(kHintEnable, hints);
    ASSERT_EQ(enabling.size(), 1u);
    EXPECT_EQ(enabling[0].arguments[0].word, 0x8001u);
    EXPECT_EQ(enabling[0].arguments[1].text, nullptr);
    EXPECT_EQ(enabling[0].ids, (std::vector<unsigned int>{0x8004}));
    const int *map = enabling[0].arguments[3].numbers;
    ASSERT_NE(map, nullptr);
    // Panels read a few entries beyond the modes, so the map has 16 entries.
    for (int mode = 0; mode < 16; ++mode) EXPECT_EQ(map[mode], mode >= 2 && mode < 8 ? 1 : 0) << mode;
    EXPECT_EQ(limitsOf(hints), Lines{});
}

TEST(HoldValueThreaded, EveryThreadHoldsItsOwn) {
    FakeHost host;
    TestNode node(host, "Velm Hold Value");
    node.set(0x8001, 2);
    // Each thread has an input of its own; A equals B from the second to the tenth sample.
    node.input("In").source = [](ShadingSample *sample, void *value) {
        *static_cast<double *>(value) = sample->threadIndex * 1000 + sample->pixelX;
    };
    node.input("B").source = [](ShadingSample *sample, void *value) {
        *static_cast<double *>(value) = sample->pixelX < 10 ? 0 : 1;
    };
    const auto wrong = [&](int thread) {
        ShadingSample sample = plainSample();
        sample.threadIndex = thread;
        int count = 0;
        for (sample.pixelX = 0; sample.pixelX < 500; ++sample.pixelX)
            count += node.scalar("Out", sample) != thread * 1000 + (sample.pixelX < 10 ? 0 : sample.pixelX);
        return count;
    };
    for (int round = 0; round < 2; ++round) {
        std::array<int, kMaxThreads> failures{};
        std::vector<std::thread> threads;
        for (int i = 0; i < kMaxThreads; ++i)
            threads.emplace_back([&, i] { failures[static_cast<size_t>(i)] = wrong(i); });
        for (std::thread &thread : threads) thread.join();
        for (const int count : failures) EXPECT_EQ(count, 0);
        EXPECT_EQ(node.render.init(node.instance, kInitRender), nullptr) << "and afresh after a start";
    }
}

} // namespace
} // namespace velm::plugin
