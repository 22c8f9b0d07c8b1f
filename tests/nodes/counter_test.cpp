// Counter against a simple model of it, and in cases that artists rely on.
#include "tests/module/test_node.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <thread>

namespace velm::plugin {
namespace {

constexpr unsigned int kMode = 0x8001;
constexpr int kModes = 13;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The results of comparing two values, and for each mode those that reset the count to the start value.
enum Order { kLess, kEqual, kGreater, kUnordered };
struct Rule {
    const char *text;
    bool resets[4]; // less, equal, greater, unordered
};
constexpr Rule kRules[kModes] = {
    {.text = "count = A", .resets = {false, true, false, true}},
    {.text = "count > A", .resets = {false, false, true, false}},
    {.text = "count < A", .resets = {true, false, false, true}},
    {.text = "count >= A", .resets = {false, true, true, false}},
    {.text = "count <= A", .resets = {true, true, false, true}},
    {.text = "A = last A", .resets = {false, true, false, true}},
    {.text = "A != last A", .resets = {true, false, true, false}},
    {.text = "A = B", .resets = {false, true, false, true}},
    {.text = "A != B", .resets = {true, false, true, false}},
    {.text = "A > B", .resets = {false, false, true, false}},
    {.text = "A < B", .resets = {true, false, false, true}},
    {.text = "A >= B", .resets = {false, true, true, false}},
    {.text = "A <= B", .resets = {true, true, false, true}},
};

Order orderOf(double left, double right) {
    if (std::isnan(left) || std::isnan(right)) return kUnordered;
    return left < right ? kLess : left > right ? kGreater : kEqual;
}

// A model of the counter of one thread.
struct Model {
    bool fresh = true;
    double count = 0, lastA = 0;

    double next(int mode, double start, double increase, double a, double b) {
        count += increase;
        if (fresh) {
            fresh = false;
            count = start;
            lastA = a;
            return count;
        }
        const bool change = mode == 5 || mode == 6;
        const Order order = mode < 5 ? orderOf(count, a) : change ? orderOf(a, lastA) : orderOf(a, b);
        if (kRules[mode].resets[order]) count = start;
        if (change) lastA = a;
        return count;
    }
};

class CounterNode : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Counter"};
    ShadingSample sample = plainSample();

    double out() { return node.scalar("Out", sample); }
    std::vector<double> outs(int count) {
        std::vector<double> values;
        for (int i = 0; i < count; ++i) values.push_back(out());
        return values;
    }
    void init() { node.render.init(node.instance, kInitRender); }
    // Connects all five inputs to these values.
    void feed(int mode, double start, double increase, double a, double b) {
        node.connect("Mode", mode);
        node.connect("Start Value", start);
        node.connect("Increase Value", increase);
        node.connect("A", a);
        node.connect("B", b);
    }
};

using Values = std::vector<double>;

// ---- The class ----

TEST_F(CounterNode, HasFiveInputsAndOneOutput) {
    EXPECT_EQ(node.inputs(), (std::vector<std::string>{"Mode 4", "Start Value 2", "Increase Value 2", "A 2", "B 2"}));
    EXPECT_EQ(node.outputs(), (std::vector<std::string>{"Out 2"}));
}

TEST_F(CounterNode, ReadsItsInputsInOrderAndSetsItsOutputOnce) {
    host.logsEvaluation = true;
    EXPECT_EQ(node.evaluate("Out", sample).timesSet, 1);
    EXPECT_EQ(host.takeLog(),
              (std::vector<std::string>{"evaluate Mode", "evaluate Start Value", "evaluate Increase Value",
                                        "evaluate A", "evaluate B", "setValue"}));
}

TEST_F(CounterNode, KeepsAFreshFlagForEachThread) {
    init();
    sample.threadIndex = 5;
    out();
    const int *fresh = static_cast<const int *>(node.instance);
    for (int thread = 0; thread < kMaxThreads; ++thread) EXPECT_EQ(fresh[thread], thread == 5 ? 0 : 1);
}

// ---- Against the model ----

class CounterMode : public CounterNode, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Modes, CounterMode, testing::Range(0, kModes));

TEST_P(CounterMode, FollowsTheModelOnAnyValues) {
    std::mt19937 random(static_cast<unsigned int>(GetParam()));
    // Small integers, so that equal ones are common, and sometimes a NaN.
    const auto any = [&random] {
        const auto value = static_cast<int>(random() % 12);
        return value == 11 ? kNaN : value - 4.0;
    };
    std::array<Model, kMaxThreads> models;
    for (int i = 0; i < 4000; ++i) {
        const double start = static_cast<int>(random() % 5), increase = static_cast<int>(random() % 3), a = any(),
                     b = any();
        feed(GetParam(), start, increase, a, b);
        sample.threadIndex = static_cast<int>(random() % kMaxThreads);
        const double expected = models[static_cast<size_t>(sample.threadIndex)].next(GetParam(), start, increase, a, b);
        ASSERT_EQ(out(), expected) << kRules[GetParam()].text << ", evaluation " << i;
    }
}

TEST_P(CounterMode, IsReadFromTheSettingWhereNothingIsConnected) {
    node.set(kMode, GetParam());
    node.set("A", 2.0);
    node.set("B", 1.0);
    node.set("Start Value", -1.0);
    init();
    Model model;
    for (int i = 0; i < 12; ++i) ASSERT_EQ(out(), model.next(GetParam(), -1, 1, 2, 1)) << i;
}

TEST_P(CounterMode, CountsAFirstEvaluationAsTheStartWhateverTheMode) {
    feed(GetParam(), 7, 3, 100, 100);
    EXPECT_EQ(out(), 7);
}

// A NaN on either side, or on both.
TEST_P(CounterMode, TakesWhatIsNotANumberAsItsRuleSays) {
    const bool resets = kRules[GetParam()].resets[kUnordered];
    struct Row {
        double a, b;
    };
    for (const Row row : {Row{kNaN, 1}, Row{1, kNaN}, Row{kNaN, kNaN}, Row{-kNaN, 0}}) {
        if (GetParam() < 7 && !std::isnan(row.a)) continue; // these modes do not read B
        feed(GetParam(), 50, 1, row.a, row.b);
        init();
        ASSERT_EQ(out(), 50);
        EXPECT_EQ(out(), resets ? 50 : 51) << kRules[GetParam()].text << " with " << row.a << ", " << row.b;
    }
}

TEST_P(CounterMode, TakesACountThatIsNotANumberAsItsRuleSays) {
    if (GetParam() >= 5) return; // these modes do not compare the count
    feed(GetParam(), 50, 1, 3, 0);
    init();
    out();
    node.connect("Increase Value", kNaN);
    const double value = out();
    EXPECT_EQ(std::isnan(value), !kRules[GetParam()].resets[kUnordered]);
    EXPECT_TRUE(std::isnan(value) || value == 50);
}

TEST_F(CounterNode, ALastAThatIsNotANumberComparesAsOne) {
    feed(5, 50, 1, kNaN, 0); // resets while A stays the same
    init();
    out();
    node.connect("A", 4.0);
    EXPECT_EQ(out(), 50) << "unordered counts as equal";
    node.connect("A", 5.0);
    EXPECT_EQ(out(), 51) << "and A is remembered all the same";
    feed(6, 50, 1, kNaN, 0);
    init();
    out();
    node.connect("A", 4.0);
    EXPECT_EQ(out(), 51);
}

// ---- Known sequences ----

TEST_F(CounterNode, DefaultsCountOn) { EXPECT_EQ(outs(6), (Values{0, 1, 2, 3, 4, 5})); }

TEST_F(CounterNode, CountsToALimitAndStartsAgain) {
    node.set(kMode, 1);
    node.set("A", 3.0);
    EXPECT_EQ(outs(9), (Values{0, 1, 2, 3, 0, 1, 2, 3, 0}));
}

TEST_F(CounterNode, ADoesChangeResetsWhileAStaysTheSame) {
    node.set(kMode, 5);
    node.set("Start Value", 10.0);
    EXPECT_EQ(outs(4), (Values{10, 10, 10, 10}));
    for (int i = 1; i <= 4; ++i) {
        node.connect("A", static_cast<double>(i));
        EXPECT_EQ(out(), 10 + i) << "A changes";
    }
    EXPECT_EQ(out(), 10) << "and stays";
}

TEST_F(CounterNode, ADoesNotChangeResetsWhenAChanges) {
    node.set(kMode, 6);
    node.set("Start Value", 10.0);
    EXPECT_EQ(outs(4), (Values{10, 11, 12, 13}));
    for (int i = 1; i <= 4; ++i) {
        node.connect("A", static_cast<double>(i));
        EXPECT_EQ(out(), 10) << "A changes";
    }
    EXPECT_EQ(out(), 11) << "and stays";
}

TEST_F(CounterNode, OtherModesDoNotRememberA) {
    node.set(kMode, 5);
    node.connect("A", 1.0);
    out();
    for (const int mode : {0, 1, 2, 3, 4, 7, 8, 9, 10, 11, 12}) {
        node.connect("Mode", mode);
        node.connect("A", 2.0);
        out();
    }
    node.connect("Mode", 5);
    node.connect("A", 1.0);
    EXPECT_EQ(out(), 0) << "the same as when a change mode last looked";
}

TEST_P(CounterMode, TheFirstEvaluationRemembersAWhateverTheMode) {
    feed(GetParam(), 0, 1, 4, 9);
    out();
    node.connect("Mode", 5);
    EXPECT_EQ(out(), 0) << "A is what it was at first";
}

TEST_F(CounterNode, AModeOutsideTheListIsTheNearestInIt) {
    struct Row {
        int given, used;
    };
    for (const Row row : {Row{-3, 0}, Row{-1, 0}, Row{0, 0}, Row{12, 12}, Row{13, 12}, Row{40, 12},
                          Row{std::numeric_limits<int>::min(), 0}, Row{std::numeric_limits<int>::max(), 12}}) {
        // A = 1 and B = 2: mode 0 resets at 1, mode 12 always, and the modes between them differ.
        feed(row.given, 0, 1, 1, 2);
        init();
        Model model;
        for (int i = 0; i < 4; ++i) EXPECT_EQ(out(), model.next(row.used, 0, 1, 1, 2)) << row.given;
        node.disconnect("Mode");
        node.set(kMode, row.given);
        init();
        model = {};
        for (int i = 0; i < 4; ++i) EXPECT_EQ(out(), model.next(row.used, 0, 1, 1, 2)) << row.given;
        EXPECT_EQ(node.integer(kMode), row.given) << "the setting itself stays";
    }
}

// ---- How long the count lasts ----

TEST_F(CounterNode, ThreadsCountForThemselves) {
    ShadingSample other = plainSample();
    other.threadIndex = 15;
    EXPECT_EQ(outs(3), (Values{0, 1, 2}));
    EXPECT_EQ(node.scalar("Out", other), 0);
    EXPECT_EQ(out(), 3);
    EXPECT_EQ(node.scalar("Out", other), 1);
}

TEST_F(CounterNode, FramesDoNotRestartTheCount) {
    outs(3);
    for (int frame = 1; frame < 4; ++frame) {
        node.render.newTime(node.instance, frame, frame / 24.0);
        EXPECT_EQ(out(), 2 + frame);
    }
}

TEST_F(CounterNode, ARenderRestartsTheCountOfEveryThread) {
    for (sample.threadIndex = 0; sample.threadIndex < kMaxThreads; ++sample.threadIndex) outs(3);
    init();
    for (sample.threadIndex = 0; sample.threadIndex < kMaxThreads; ++sample.threadIndex) EXPECT_EQ(out(), 0);
}

TEST_F(CounterNode, TheEndOfARenderChangesNothing) {
    outs(3);
    node.render.cleanup(node.instance);
    EXPECT_EQ(out(), 3);
}

TEST_F(CounterNode, EachAskingCounts) {
    sample.pixelX = sample.pixelY = 100;
    EXPECT_EQ(outs(2), (Values{0, 1})) << "twice in one sample";
}

TEST_F(CounterNode, AConnectionHoldsForItsSampleOnly) {
    node.set("Increase Value", 2.0);
    EXPECT_EQ(outs(2), (Values{0, 2}));
    node.connect("Increase Value", 100.0);
    EXPECT_EQ(out(), 102);
    node.disconnect("Increase Value");
    EXPECT_EQ(out(), 104);
    EXPECT_EQ(node.parm("Increase Value").value[0], 2.0);
}

TEST_F(CounterNode, AnInputSeesTheSampleThatIsShaded) {
    node.input("Start Value").source = [](ShadingSample *asked, void *value) {
        *static_cast<double *>(value) = asked->pixelX;
    };
    sample.pixelX = 42;
    EXPECT_EQ(out(), 42);
}

TEST_F(CounterNode, AnimatesItsSettings) {
    node.parm("Increase Value").overTime = [](double time, double *value) { value[0] = 10 * time; };
    out();
    node.render.newTime(node.instance, 1, 1.0);
    EXPECT_EQ(out(), 10);
    node.render.newTime(node.instance, 2, 2.0);
    EXPECT_EQ(out(), 30);
}

// ---- Several threads ----

class ThreadedCounter : public CounterNode {};

TEST_F(ThreadedCounter, EveryThreadSeesItsOwnCount) {
    node.set(kMode, 1);
    node.set("A", 1000.0);
    node.set("Increase Value", 0.5);
    init();
    std::array<bool, kMaxThreads> right{};
    std::vector<std::thread> threads;
    HostOutput &output = node.output("Out");
    for (int index = 0; index < kMaxThreads; ++index)
        threads.emplace_back([&, index] {
            ShadingSample own = plainSample();
            own.threadIndex = index;
            Model model;
            bool same = true;
            for (int i = 0; i < 5000 + index; ++i) {
                HostNodeValue value = {.asked = &output};
                node.handler.evaluate(node.instance, &own, &output, &value);
                same = same && value.numbers[0] == model.next(1, 0, 0.5, 1000, 0);
            }
            right[static_cast<size_t>(index)] = same;
        });
    for (std::thread &thread : threads) thread.join();
    for (int index = 0; index < kMaxThreads; ++index) EXPECT_TRUE(right[static_cast<size_t>(index)]) << index;
}

} // namespace
} // namespace velm::plugin
