// Parts of a picture: they cover it without overlapping, and are of similar sizes.
#include "host/base/error.h"
#include "host/render/order/picture_part.h"
#include "host/render/order/unit_of_work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace velm::host::test {
namespace {

TEST(PicturePart, PartsByTilesCoverTheRegionOnce) {
    for (const Region region : {Region{.left = 0, .top = 0, .right = 480, .bottom = 270},
                                Region{.left = 33, .top = 5, .right = 210, .bottom = 64},
                                Region{.left = 0, .top = 0, .right = 96, .bottom = 96}}) {
        const int columns = (region.right + kTileSize - 1) / kTileSize - region.left / kTileSize;
        const int rows = (region.bottom + kTileSize - 1) / kTileSize - region.top / kTileSize;
        for (int count = 1; count <= columns * rows; ++count) {
            std::vector<int> covered(std::size_t{480} * 270);
            for (int number = 1; number <= count; ++number) {
                const Region pixels = pixelsOfPart(region, {.number = number, .count = count});
                EXPECT_FALSE(pixels.isEmpty()) << number << " of " << count;
                for (int y = pixels.top; y < pixels.bottom; ++y)
                    for (int x = pixels.left; x < pixels.right; ++x) ++covered[static_cast<std::size_t>(y * 480 + x)];
            }
            for (int y = 0; y < 270; ++y)
                for (int x = 0; x < 480; ++x)
                    ASSERT_EQ(covered[static_cast<std::size_t>(y * 480 + x)], region.contains(x, y) ? 1 : 0)
                        << x << ", " << y << " in " << count << " parts";
        }
    }
}

TEST(PicturePart, PartsByTilesAreOfSimilarSize) {
    const Region region = {.left = 0, .top = 0, .right = 1920, .bottom = 1080};
    for (const int count : {2, 3, 6, 7, 16, 40}) {
        int smallest = 1920 * 1080, largest = 0;
        for (int number = 1; number <= count; ++number) {
            const Region pixels = pixelsOfPart(region, {.number = number, .count = count});
            smallest = std::min(smallest, pixels.width() * pixels.height());
            largest = std::max(largest, pixels.width() * pixels.height());
        }
        EXPECT_LT(largest, 1.5 * smallest) << count;
    }
}

TEST(PicturePart, PartsBySamplesFollowEachOther) {
    for (const int samples : {1, 7, 8, 4096}) {
        for (int count = 1; count <= std::min(samples, 9); ++count) {
            int next = 0;
            for (int number = 1; number <= count; ++number) {
                const SampleRange range = samplesOfPart(samples, {.number = number, .count = count});
                EXPECT_EQ(range.first, next);
                EXPECT_GT(range.end, range.first);
                next = range.end;
            }
            EXPECT_EQ(next, samples);
        }
    }
}

TEST(PicturePart, RefusesMorePartsThanThereAre) {
    EXPECT_THROW(pixelsOfPart({.left = 0, .top = 0, .right = 33, .bottom = 32}, {.number = 1, .count = 3}), InputError);
    EXPECT_THROW(samplesOfPart(4, {.number = 1, .count = 5, .by = PartsBy::samples}), InputError);
}

} // namespace
} // namespace velm::host::test
