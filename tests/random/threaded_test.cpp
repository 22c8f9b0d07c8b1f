// All render threads draw from the stream at once. Draws may repeat or skip words, but must be valid.
#include "tests/random/stream.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <vector>

namespace velm::plugin {
namespace {

constexpr int kThreads = 16; // the most that a host has
constexpr int kDraws = 20000;

// Runs `draw` on all threads, starting at the same time. `draw` returns whether its results are valid.
template <class Draw>
int unsoundDraws(Draw draw) {
    std::atomic<int> waiting = kThreads, unsound = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            for (int n = 0; n < kDraws; ++n)
                if (!draw()) ++unsound;
        });
    for (std::thread &thread : threads) thread.join();
    return unsound;
}

bool indexIsSound() {
    const int index = mti;
    return index >= 0 && index <= kNeverSeeded;
}

class ThreadedRandom : public testing::Test {
  protected:
    ThreadedRandom() { init_genrand(3); }
};

TEST_F(ThreadedRandom, DrawsStayInRange) {
    EXPECT_EQ(unsoundDraws([] {
                  const double closed = genrand_real1(), open = genrand_real2(), noise = gaussianNoise();
                  return indexIsSound() && closed >= 0 && closed <= 1 && open >= 0 && open < 1 && noise > -1 &&
                         noise < 1.0002;
              }),
              0);
    EXPECT_LE(mti.load(), kStateWords);
}

// The scopes of a thread do not affect other threads, and taking words ahead on all of them keeps the index in its
// range.
TEST_F(ThreadedRandom, WordsMayBeTakenAheadOnEveryThread) {
    EXPECT_EQ(unsoundDraws([] {
                  WordsAhead ahead;
                  ahead.fill(54);
                  const uint32_t first = ahead.words()[0];
                  return genrand_int32() == first && ahead.left() == 53 && indexIsSound();
              }),
              0);
    EXPECT_LE(mti.load(), kStateWords);
}

TEST_F(ThreadedRandom, TheFirstDrawMayComeFromEveryThread) {
    forgetSeed();
    EXPECT_EQ(unsoundDraws([] {
                  genrand_int32();
                  return indexIsSound();
              }),
              0);
    EXPECT_LE(mti.load(), kStateWords);
    const bool seeded = std::any_of(std::begin(mt), std::end(mt), [](const auto &word) { return word != 0; });
    EXPECT_TRUE(seeded);
}

TEST_F(ThreadedRandom, DrawsStayEvenlySpread) {
    std::atomic<long> ones = 0;
    unsoundDraws([&] {
        ones += genrand_int32() >> 31;
        return true;
    });
    // Words may repeat, so the draws are not independent. The bound is wide, but a stuck stream exceeds it.
    EXPECT_NEAR(static_cast<double>(ones) / (kThreads * kDraws), 0.5, 0.1);
}

TEST_F(ThreadedRandom, ASeedAfterwardsStartsTheSequenceAgain) {
    unsoundDraws([] { return genrand_int32() > 0; });
    std::mt19937 reference(3);
    init_genrand(3);
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(genrand_int32(), reference());
}

} // namespace
} // namespace velm::plugin
