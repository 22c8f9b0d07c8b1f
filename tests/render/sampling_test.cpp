// Sample points: stratified, and scrambled differently for different seeds.
#include "host/render/geometry/sampling.h"

#include <gtest/gtest.h>

#include <cmath>
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

// The points of a purpose are stratified like those on the picture.
TEST(Sampling, PointsOfAPurposeFillEveryElementaryInterval) {
    constexpr std::uint32_t kCount = 16, kSide = 4;
    for (const std::uint32_t seed : {1u, 77u}) {
        for (const std::uint32_t block : {0u, 5u}) {
            std::set<int> cells;
            for (std::uint32_t i = 0; i < kCount; ++i) {
                const UnitSquare point = samplePoint(block * kCount + i, seed, SamplePurpose::lens);
                cells.insert(static_cast<int>(point.y * kSide) * 4 + static_cast<int>(point.x * kSide));
            }
            EXPECT_EQ(cells.size(), kCount) << "seed " << seed << ", block " << block;
        }
    }
}

// Without a shuffled index, the first coordinates of the two points would be in equal quarters wherever those of
// another sample are: 16 samples would be in only 4 of 4 by 4 cells. Independent ones are in 10.3 of them on average.
TEST(Sampling, PointsOfAPurposeDoNotFollowThoseOfThePicture) {
    constexpr std::uint32_t kPixels = 200, kSamples = 16;
    std::size_t cells = 0;
    for (std::uint32_t pixel = 0; pixel < kPixels; ++pixel) {
        std::set<std::pair<int, int>> found;
        for (std::uint32_t i = 0; i < kSamples; ++i)
            found.emplace(static_cast<int>(4 * stratifiedPoint(i, scramble(pixel)).x),
                          static_cast<int>(4 * samplePoint(i, scramble(pixel), SamplePurpose::lens).x));
        cells += found.size();
    }
    EXPECT_GT(static_cast<double>(cells) / kPixels, 9);
}

// Of equally many points in cells of the square, a part of the shape gets as many as its part of the area.
TEST(Sampling, ShapesOfLensesAreFilledEvenly) {
    constexpr int kSide = 200;
    const double half = std::sqrt(0.5); // the disc of this radius has half of the area
    int inDisc = 0, inSquare = 0;
    for (int i = 0; i < kSide * kSide; ++i) {
        const int column = i % kSide, row = i / kSide;
        const UnitSquare point = {(column + 0.5) / kSide, (row + 0.5) / kSide};
        const DiscPoint disc = onDisc(point);
        EXPECT_LE(std::hypot(disc.x, disc.y), 1);
        if (std::hypot(disc.x, disc.y) < half && disc.x > 0) ++inDisc;
        const DiscPoint square = onPolygon(point, 4, 0); // the square with corners at (1, 0), (0, 1) and so on
        EXPECT_LE(std::fabs(square.x) + std::fabs(square.y), 1 + 1e-12);
        if (square.x + square.y > 0.5) ++inSquare; // the outer quarter of the upper right half
    }
    EXPECT_NEAR(inDisc, kSide * kSide / 4.0, kSide * kSide * 0.005);
    EXPECT_NEAR(inSquare, kSide * kSide / 4.0, kSide * kSide * 0.005);
}

} // namespace
} // namespace velm::host::test
