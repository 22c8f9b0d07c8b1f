// Random: the class, the bounds, and the shared stream.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "random/random.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <array>
#include <random>
#include <thread>

namespace velm::plugin {
namespace {

const NodeFacts kFacts = {
    .name = "Random",
    .menu = "Velm's Nodes/Math",
    .activate = Random_Activate,
    .interface = Random_Interface,
    .parms = {{"Min", 16, {0}}, {"Max", 16, {1}}},
    .inputs = {"Min 2", "Max 2"},
    .outputs = {"Out 2"},
    .panel = {{0x8001, "Min", "float-env", "float-env", "Min", "Min"},
              {0x8002, "Max", "float-env", "float-env", "Max", "Max"}},
    .saved = {"parm Min", "parm Max"},
};
VELM_NODE_WITH_PANEL(Random, kFacts);

// The numbers of the stream after creating a node, from the standard library's MT19937.
class Reference {
  public:
    double next() { return static_cast<double>(generator_()) * (1.0 / 4294967295.0); }

  private:
    std::mt19937 generator_{3};
};

// The state word whose tempering gives all ones: the steps of the tempering, inverted.
constexpr uint32_t kDrawnAsOnes = [] {
    uint32_t y = 0xffffffffu;
    y ^= y >> 18;
    y ^= y << 15 & 0xefc60000u;
    uint32_t x = y;
    for (int i = 0; i < 4; ++i) x = y ^ (x << 7 & 0x9d2c5680u);
    y = x;
    for (int i = 0; i < 2; ++i) x = y ^ x >> 11;
    return x;
}();

class Random : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Random"};
    ShadingSample sample = plainSample();
    Reference reference;
};

TEST_F(Random, GivesTheStreamOfItsCreation) {
    for (int i = 0; i < 2000; ++i) {
        const double value = node.scalar("Out", sample);
        EXPECT_EQ(value, reference.next());
        EXPECT_TRUE(value >= 0 && value <= 1);
    }
}

TEST_F(Random, LiesBetweenItsBounds) {
    node.set("Min", -2);
    node.set("Max", 6);
    for (int i = 0; i < 500; ++i) EXPECT_EQ(node.scalar("Out", sample), -2 + 8 * reference.next());
}

TEST_F(Random, ReachesBothItsBounds) {
    node.set("Min", 3);
    node.set("Max", 5);
    init_genrand(3);
    mt[0] = 0, mti = 0; // a state word of 0 is drawn as 0
    EXPECT_EQ(node.scalar("Out", sample), 3);
    mt[0] = kDrawnAsOnes, mti = 0;
    ASSERT_EQ(temper(kDrawnAsOnes), 0xffffffffu);
    EXPECT_EQ(node.scalar("Out", sample), 5);
}

TEST_F(Random, EqualBoundsGiveThemAndStillDraw) {
    node.set("Min", 5);
    node.set("Max", 5);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(node.scalar("Out", sample), 5);
    for (int i = 0; i < 3; ++i) reference.next();
    EXPECT_EQ(genrand_real1(), reference.next());
}

TEST_F(Random, BoundsTheWrongWayRoundCountDown) {
    node.set("Min", 1);
    node.set("Max", 0);
    for (int i = 0; i < 500; ++i) EXPECT_EQ(node.scalar("Out", sample), 1 - reference.next());
}

TEST_F(Random, ASecondNodeRestartsTheStreamForAll) {
    const double first = node.scalar("Out", sample), second = node.scalar("Out", sample);
    TestNode other(host, "Velm Random", "other");
    EXPECT_EQ(node.scalar("Out", sample), first);
    EXPECT_EQ(other.scalar("Out", sample), second) << "one stream for both";
    node.render.init(node.instance, kInitRender);
    node.render.newTime(node.instance, 1, 0.04);
    reference.next(), reference.next();
    EXPECT_EQ(node.scalar("Out", sample), reference.next()) << "nothing but a creation restarts it";
}

TEST_F(Random, DrawsAfterItsInputs) {
    // Nodes connected to the bounds may draw too; this node draws last.
    node.input("Min").source = [](ShadingSample *, void *value) { *static_cast<double *>(value) = genrand_real1(); };
    node.input("Max").source = [](ShadingSample *, void *value) { *static_cast<double *>(value) = genrand_real1(); };
    const double low = reference.next(), high = reference.next();
    EXPECT_EQ(node.scalar("Out", sample), low + (high - low) * reference.next());
    host.logsEvaluation = true;
    node.evaluate("Out", sample);
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Min", "evaluate Max", "setValue"}));
}

TEST_F(Random, FollowsItsFrames) {
    for (const char *bound : {"Min", "Max"})
        node.parm(bound).overTime = [](double time, double *value) { *value = time; };
    node.render.newTime(node.instance, 1, 2.5);
    EXPECT_EQ(node.scalar("Out", sample), 2.5);
    Random_get_vpValues(node.instance, 3.5);
    EXPECT_EQ(node.scalar("Out", sample), 3.5);
}

TEST_F(Random, ACopyHasItsBoundsFromTheNextFrame) {
    node.set("Min", 8);
    node.set("Max", 8);
    TestNode copy(host, "Velm Random", "copy");
    ASSERT_EQ(copy.ops.copy(copy.instance, node.instance), nullptr);
    EXPECT_EQ(copy.scalar("Out", sample), reference.next());
    copy.render.newTime(copy.instance, 0, 0.0);
    EXPECT_EQ(copy.scalar("Out", sample), 8);
}

TEST_F(Random, LoadingReadsTheBoundsAtTheStart) {
    RecordedState state;
    state.parm({4}).parm({4});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(node.scalar("Out", sample), 4);
}

TEST_F(Random, ThePanelIsPlain) {
    EXPECT_EQ(hintsOf(node.panel()->hints).size(), 6u) << "notifications, two controls and their labels";
}

TEST(RandomThreaded, DrawsOnManyThreadsStayBetweenTheBounds) {
    FakeHost host;
    TestNode node(host, "Velm Random");
    node.set("Min", 2);
    node.set("Max", 3);
    std::array<int, kMaxThreads> outside{};
    std::array<double, kMaxThreads> sums{};
    std::vector<std::thread> threads;
    constexpr int draws = 5000;
    for (size_t i = 0; i < kMaxThreads; ++i)
        threads.emplace_back([&, i] {
            ShadingSample sample = plainSample();
            sample.threadIndex = static_cast<int>(i);
            for (int draw = 0; draw < draws; ++draw) {
                const double value = node.scalar("Out", sample);
                outside[i] += !(value >= 2 && value <= 3);
                sums[i] += value;
            }
        });
    for (std::thread &thread : threads) thread.join();
    for (size_t i = 0; i < kMaxThreads; ++i) {
        EXPECT_EQ(outside[i], 0);
        EXPECT_TRUE(sums[i] > 2 * draws && sums[i] < 3 * draws) << "numbers, not one number";
    }
}

} // namespace
} // namespace velm::plugin
