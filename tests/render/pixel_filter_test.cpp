// The distributions of pixel filters.
#include "host/render/scene/pixel_filter.h"
#include "tests/render/test_scene.h"

#include <cmath>
#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

struct Moments {
    double mean, variance, least, most;
};

Moments momentsOf(const FilterDescription &description) {
    const PixelFilter filter(description);
    constexpr int kCount = 100000;
    double sum = 0, squares = 0;
    for (int i = 0; i < kCount; ++i) {
        const double x = filter.coordinate((i + 0.5) / kCount) - 0.5;
        sum += x;
        squares += x * x;
    }
    return {.mean = sum / kCount,
            .variance = squares / kCount,
            .least = filter.coordinate(0),
            .most = filter.coordinate(1)};
}

struct FilterCase {
    FilterShape shape;
    double variance; // of a filter of width 1, in closed form
};

// A box of width 1 has 1/12. A Gaussian that is cut off at three standard deviations has 0.97334 of the variance of a
// whole one, 1/36. The Blackman-Harris window a0 + a1 cos + a2 cos + a3 cos has
// 1/12 - (a1 - a2 / 4 + a3 / 9) / (2 pi^2 a0).
constexpr FilterCase kCases[] = {
    {FilterShape::box, 1.0 / 12}, {FilterShape::gaussian, 0.97334 / 36}, {FilterShape::blackmanHarris, 0.0191845}};

constexpr double kRelative = 0.004; // of variances: linear interpolation in the table makes them slightly larger

TEST(PixelFilter, MatchesTheVarianceAndTheWidth) {
    for (const FilterCase &each : kCases) {
        for (const double width : {0.5, 2.0, 5.0}) {
            const Moments found = momentsOf({.shape = each.shape, .width = width});
            const double variance = each.variance * width * width;
            EXPECT_NEAR(found.variance, variance, kRelative * variance) << static_cast<int>(each.shape);
            EXPECT_NEAR(found.mean, 0, 1e-9);
            EXPECT_NEAR(found.least, 0.5 - width / 2, 1e-9);
            EXPECT_NEAR(found.most, 0.5 + width / 2, 1e-9);
        }
    }
}

TEST(PixelFilter, TheDefaultIsTheIdentity) {
    const PixelFilter filter({});
    for (const double number : {0.0, 0.1, 0.123456789, 0.5, 0.999}) EXPECT_EQ(filter.coordinate(number), number);
}

TEST(PixelFilter, CoordinatesIncreaseWithTheNumber) {
    for (const FilterCase &each : kCases) {
        const PixelFilter filter({.shape = each.shape, .width = 3});
        for (int i = 0; i < 5000; ++i) EXPECT_LT(filter.coordinate(i / 5000.0), filter.coordinate((i + 1) / 5000.0));
    }
}

// A box covers the left half of the picture. The standard deviation of a Gaussian filter with a width of 3 pixels is
// half a pixel. The centres of the inner pixels are one standard deviation from the edge; 0.1577 of the filter's weight
// is beyond it. The centres of the outer pixels are as far from the edge as the filter extends.
TEST(PixelFilter, SpreadsAnEdgeOverItsWidth) {
    TestScene scene;
    scene.job.width = 4;
    scene.job.samples = 1024;
    scene.surface("Box", {{"Luminosity", 1}});
    scene.object("Box", BoxShape{.size = {9, 9, 0.001}}, "Box", {-4.5, 0, 0});
    const auto alpha = [&scene](int x) { return static_cast<double>(scene.render().picture.pixel(x, 0)[3]); };
    EXPECT_EQ(alpha(1), 1);
    EXPECT_EQ(alpha(2), 0);
    scene.job.filter = {.shape = FilterShape::gaussian, .width = 3};
    constexpr double kTolerance = 0.005; // of stratified samples
    EXPECT_NEAR(alpha(0), 1, kTolerance);
    EXPECT_NEAR(alpha(1), 1 - 0.1577, kTolerance);
    EXPECT_NEAR(alpha(2), 0.1577, kTolerance);
    EXPECT_NEAR(alpha(3), 0, kTolerance);
}

} // namespace
} // namespace velm::host::test
