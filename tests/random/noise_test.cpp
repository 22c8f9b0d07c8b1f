// The noise value: its formula, its extremes and its moments.
#include "tests/random/stream.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace velm::plugin {
namespace {

// (2 * 10923 * sum - 32766) / 32767, for the sum of three uniform values.
double expectedNoise(const uint32_t (&words)[3]) {
    const double sum = words[0] / 4294967296.0 + words[1] / 4294967296.0 + words[2] / 4294967296.0;
    return (2 * 10923 * sum - 32766) / 32767;
}

constexpr double kRounding = 1e-7; // the last factor is a single-precision 1 / 32767

TEST(Noise, FollowsItsFormula) {
    std::mt19937 reference(7);
    for (int i = 0; i < 2000; ++i) {
        const uint32_t words[3] = {static_cast<uint32_t>(reference()), static_cast<uint32_t>(reference()),
                                   static_cast<uint32_t>(reference())};
        ASSERT_NEAR(noiseOfWords(words[0], words[1], words[2]), expectedNoise(words), kRounding);
    }
}

TEST(Noise, UsesSinglePrecisionForItsConstants) {
    constexpr float c3 = 1.0f / 32767.0f;
    EXPECT_EQ(noiseOfWords(0, 0, 0), -32766.0 * static_cast<double>(c3));
    EXPECT_EQ(noiseOfWords(0x80000000, 0x80000000, 0x80000000), 3.0 * static_cast<double>(c3));
    EXPECT_EQ(noiseOfWords(0x80000000, 0, 0), (10923.0 - 32766.0) * static_cast<double>(c3));
}

TEST(Noise, IsLeastWithoutAnyBit) {
    setNextWords(0u, 0u, 0u);
    EXPECT_NEAR(gaussianNoise(), -32766.0 / 32767, kRounding);
}

TEST(Noise, IsJustBelowItsBoundWithEveryBit) {
    setNextWords(0xffffffffu, 0xffffffffu, 0xffffffffu);
    const double noise = gaussianNoise();
    EXPECT_LT(noise, 32772.0 / 32767);
    EXPECT_NEAR(noise, 32772.0 / 32767, kRounding);
    EXPECT_GT(noise, 1.0);
}

TEST(Noise, TreatsItsThreeWordsAlike) {
    const double first = noiseOfWords(0xc0000000, 0, 0);
    EXPECT_EQ(noiseOfWords(0, 0xc0000000, 0), first);
    EXPECT_EQ(noiseOfWords(0, 0, 0xc0000000), first);
}

TEST(Noise, TakesThreeWordsInOrder) {
    std::mt19937 reference(12);
    init_genrand(12);
    for (int i = 0; i < 1000; ++i) {
        uint32_t words[3];
        for (uint32_t &word : words) word = static_cast<uint32_t>(reference());
        ASSERT_EQ(gaussianNoise(), noiseOfWords(words[0], words[1], words[2]));
    }
}

// The sum of three uniform values has the variance 3 / 12, and the noise is this sum times 2 * 10923 / 32767. The
// bounds are four standard errors: of the mean sigma / sqrt(n), of the deviation about sigma / sqrt(2 n). The bias of 3
// / 32767 is too small to be measured with this sample size; the test of the middle word above shows it exactly.
TEST(Noise, HasTheMomentsOfItsFormula) {
    constexpr int n = 200000;
    const double sigma = 2 * 10923.0 / 32767 * std::sqrt(3.0 / 12), mean = 3.0 / 32767;
    EXPECT_NEAR(sigma, 1.0 / 3, 1e-4);
    init_genrand(2024);
    double sum = 0, squares = 0, lowest = 0, highest = 0;
    for (int i = 0; i < n; ++i) {
        const double noise = gaussianNoise();
        sum += noise;
        squares += noise * noise;
        lowest = std::min(lowest, noise);
        highest = std::max(highest, noise);
    }
    EXPECT_NEAR(sum / n, mean, 4 * sigma / std::sqrt(n));
    EXPECT_NEAR(std::sqrt(squares / n - sum / n * (sum / n)), sigma, 4 * sigma / std::sqrt(2.0 * n));
    EXPECT_LT(lowest, -0.9);
    EXPECT_GT(highest, 0.9);
    EXPECT_GE(lowest, -32766.0 / 32767 - kRounding);
    EXPECT_LT(highest, 32772.0 / 32767 + kRounding);
}

// The fourth moment distinguishes a sum of three uniform values from a single one and from a normal variate: the excess
// kurtosis of the sum of k uniform values is -1.2 / k.
TEST(Noise, IsASumOfThree) {
    constexpr int n = 200000;
    init_genrand(77);
    double squares = 0, fourths = 0;
    for (int i = 0; i < n; ++i) {
        const double square = std::pow(gaussianNoise(), 2);
        squares += square;
        fourths += square * square;
    }
    const double kurtosis = fourths / n / std::pow(squares / n, 2) - 3;
    EXPECT_NEAR(kurtosis, -0.4, 0.05); // a single value has -1.2, a normal variate 0
}

} // namespace
} // namespace velm::plugin
