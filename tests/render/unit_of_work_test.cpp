// Units of work: which pixels they have, in which order, and where they begin in the random stream.
#include "host/render/order/unit_of_work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <vector>

namespace velm::host::test {
namespace {

constexpr Region kTile = {.left = 0, .top = 0, .right = kTileSize, .bottom = kTileSize};

UnitOfWork unit(int sample, int level = 0) {
    return {.seed = 7, .frame = 3, .column = 2, .row = 5, .sample = sample, .level = level};
}

std::vector<int> arranged(const UnitOfWork &unit, const Region &area, PixelOrder::By by) {
    PixelOrder order;
    const auto pixels = order.arrange(unit, area, by);
    return {pixels.begin(), pixels.end()};
}

TEST(UnitOfWork, LaterSamplesHaveAllPixelsOfTheArea) {
    EXPECT_EQ(arranged(unit(1), {.left = 30, .top = 1, .right = 32, .bottom = 3}, PixelOrder::By::rows),
              (std::vector{62, 63, 94, 95}));
    for (const auto by : {PixelOrder::By::rows, PixelOrder::By::hash}) {
        std::vector<int> pixels = arranged(unit(9), kTile, by);
        EXPECT_EQ(std::is_sorted(pixels.begin(), pixels.end()), by == PixelOrder::By::rows);
        std::ranges::sort(pixels);
        ASSERT_EQ(pixels.size(), std::size_t{kTilePixels});
        for (int i = 0; i < kTilePixels; ++i) EXPECT_EQ(pixels[static_cast<std::size_t>(i)], i);
    }
}

TEST(UnitOfWork, LevelsOfTheFirstSampleHaveEachPixelOnce) {
    const std::size_t expected[] = {16, 48, 192, 768};
    std::set<int> seen;
    for (int level = 0; level < 4; ++level) {
        const std::vector<int> pixels = arranged(unit(0, level), kTile, PixelOrder::By::hash);
        EXPECT_EQ(pixels.size(), expected[level]);
        seen.insert(pixels.begin(), pixels.end());
        for (const int pixel : pixels) {
            EXPECT_EQ(pixel % kTileSize % kLevelSteps[static_cast<std::size_t>(level)], 0);
            EXPECT_EQ(pixel / kTileSize % kLevelSteps[static_cast<std::size_t>(level)], 0);
        }
    }
    EXPECT_EQ(seen.size(), std::size_t{kTilePixels});
}

TEST(UnitOfWork, EveryMemberChangesTheHash) {
    const UnitOfWork base = unit(4, 1);
    std::set<std::uint32_t> hashes = {base.hash()};
    const auto changed = [&](auto change) {
        UnitOfWork other = base;
        change(other);
        EXPECT_TRUE(hashes.insert(other.hash()).second);
    };
    changed([](UnitOfWork &each) { ++each.seed; });
    changed([](UnitOfWork &each) { ++each.frame; });
    changed([](UnitOfWork &each) { ++each.column; });
    changed([](UnitOfWork &each) { ++each.row; });
    changed([](UnitOfWork &each) { ++each.sample; });
    changed([](UnitOfWork &each) { ++each.level; });
    EXPECT_EQ(unit(4, 1).hash(), base.hash());
}

// Two units that draw the same words must not give them to neighbouring pixels.
TEST(UnitOfWork, OrdersOfDifferentUnitsHaveNoShiftInCommon) {
    const std::vector<int> first = arranged(unit(1), kTile, PixelOrder::By::hash);
    for (int frame = 4; frame < 12; ++frame) {
        UnitOfWork other = unit(1);
        other.frame = frame;
        const std::vector<int> second = arranged(other, kTile, PixelOrder::By::hash);
        for (int dy = -4; dy <= 4; ++dy) {
            for (int dx = -4; dx <= 4; ++dx) {
                int common = 0;
                for (std::size_t i = 0; i < first.size(); ++i)
                    common += second[i] % kTileSize - first[i] % kTileSize == dx &&
                                      second[i] / kTileSize - first[i] / kTileSize == dy
                                  ? 1
                                  : 0;
                EXPECT_LE(common, 3 * 16) << dx << ", " << dy << ": three blocks of 64";
            }
        }
    }
}

TEST(UnitOfWork, SkippedWordsAreSpreadEvenly) {
    constexpr std::size_t kPixels = 100;
    double sum = 0;
    std::uint32_t largest = 0;
    for (int frame = 0; frame < 4000; ++frame) {
        UnitOfWork other = unit(1);
        other.frame = frame;
        const std::uint32_t words = wordsToSkip(other.hash(), kPixels);
        EXPECT_LT(words, 1600u);
        largest = std::max(largest, words);
        sum += words;
    }
    EXPECT_NEAR(sum / 4000, 800, 40); // five standard errors
    EXPECT_GT(largest, 1590u);
}

} // namespace
} // namespace velm::host::test
