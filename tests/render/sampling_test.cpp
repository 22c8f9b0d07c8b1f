// Sample points: stratified, and scrambled differently for different seeds.
#include "host/render/geometry/sampling.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace velm::host::test {
namespace {

// In a (0,2)-sequence, the first 2^k points, and each later block of as many, put one point into each elementary
// interval of area 2^-k.
TEST(Sampling, BlocksFillEveryElementaryInterval) {
    for (const std::uint32_t seed : {0u, 1u, 12345u, 0xffffffffu}) {
        for (const int bits : {1, 2, 4, 6}) {
            const std::uint32_t count = 1u << bits;
            for (std::uint32_t block = 0; block < 3; ++block) {
                for (int across = 0; across <= bits; ++across) {
                    const double columns = 1 << across, rows = 1 << (bits - across);
                    std::set<std::pair<int, int>> cells;
                    for (std::uint32_t i = 0; i < count; ++i) {
                        const UnitSquare point = stratifiedPoint(block * count + i, seed);
                        ASSERT_TRUE(point.x >= 0 && point.x < 1 && point.y >= 0 && point.y < 1);
                        cells.emplace(static_cast<int>(point.x * columns), static_cast<int>(point.y * rows));
                    }
                    EXPECT_EQ(cells.size(), count) << bits << " bits, block " << block << ", " << across;
                }
            }
        }
    }
}

TEST(Sampling, UnscrambledFractionsAreThePublishedOnes) {
    constexpr double kUnit = 1.0 / 4294967296.0;
    const double corput[] = {0, 0.5, 0.25, 0.75, 0.125, 0.625, 0.375, 0.875};
    const double second[] = {0, 0.5, 0.75, 0.25, 0.625, 0.125, 0.375, 0.875};
    for (std::uint32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(radicalInverse(i, 0) * kUnit, corput[i]);
        EXPECT_EQ(sobol(i, 0) * kUnit, second[i]);
    }
}

TEST(Sampling, SeedsDiffer) {
    std::set<double> found;
    for (std::uint32_t seed = 0; seed < 1000; ++seed) found.insert(stratifiedPoint(0, combine(seed, 1)).x);
    EXPECT_GT(found.size(), 990u);
}

} // namespace
} // namespace velm::host::test
