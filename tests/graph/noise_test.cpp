// Gradient noise.
#include "host/graph/builtin/noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace velm::host::test {
namespace {

TEST(Noise, IsZeroOnTheLattice) {
    for (int x = -3; x < 4; ++x)
        for (int y = -3; y < 4; ++y)
            for (int z = -3; z < 4; ++z) EXPECT_EQ(gradientNoise(x, y, z), 0);
}

TEST(Noise, IsBoundedAndUsesItsRange) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(-1000, 1000);
    double low = 0, high = 0, sum = 0;
    constexpr int kCount = 100000;
    for (int i = 0; i < kCount; ++i) {
        const double value = gradientNoise(anywhere(random), anywhere(random), anywhere(random));
        low = std::min(low, value);
        high = std::max(high, value);
        sum += value;
    }
    EXPECT_GT(low, -1.04);
    EXPECT_LT(high, 1.04);
    EXPECT_LT(low, -0.7);
    EXPECT_GT(high, 0.7);
    EXPECT_NEAR(sum / kCount, 0, 0.01);
}

TEST(Noise, HasNoJumpsBetweenCells) {
    for (double at : {-2.0, 0.0, 5.0})
        for (double side : {0.3, 0.6}) {
            EXPECT_NEAR(gradientNoise(at - 1e-9, side, 0.4), gradientNoise(at + 1e-9, side, 0.4), 1e-7);
            EXPECT_NEAR(gradientNoise(side, at - 1e-9, 0.4), gradientNoise(side, at + 1e-9, 0.4), 1e-7);
            EXPECT_NEAR(gradientNoise(side, 0.4, at - 1e-9), gradientNoise(side, 0.4, at + 1e-9), 1e-7);
        }
}

TEST(Noise, IsStable) {
    const struct {
        double x, y, z, expected;
    } kRows[] = {{0.5, 0.5, 0.5, 0.5},
                 {0.1, 0.2, 0.3, 0.29938248789381122},
                 {-7.25, 3.5, 100.75, -0.36473941802978516},
                 {300.3, -300.7, 0.9, -0.37105778372375514}};
    for (const auto &row : kRows) EXPECT_NEAR(gradientNoise(row.x, row.y, row.z), row.expected, 1e-12) << row.x;
    EXPECT_NE(gradientNoise(0.3, 0.3, 0.3), gradientNoise(256.3, 0.3, 0.3)); // it does not repeat
}

TEST(Noise, AcceptsAnyNumber) {
    EXPECT_EQ(gradientNoise(NAN, 0.5, 0.5), 0);
    EXPECT_EQ(gradientNoise(0.5, INFINITY, 0.5), 0);
    EXPECT_EQ(gradientNoise(0.5, 0.5, -1e300), 0);
}

} // namespace
} // namespace velm::host::test
