// Lookups in images, compared with their definitions.
#include "host/image/image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// An image of one channel, without smaller levels.
HostImage greyImage(int width, int height, std::vector<float> values) {
    HostImage image;
    image.width = width;
    image.height = height;
    image.channels = 1;
    image.levels.push_back({.width = width, .height = height, .pixels = {values.begin(), values.end()}});
    return image;
}

double bilinear(const HostImage &image, double u, double v) {
    double colour[3];
    sampleBilinear(&image, u, v, colour);
    return colour[0];
}

struct BilinearCase {
    const char *what;
    double u, v, expected;
};

TEST(Bilinear, FollowsPixelCentresWrapsInUAndClampsInV) {
    const HostImage image = greyImage(4, 2, {0, 1, 2, 3, 10, 11, 12, 13});
    const BilinearCase cases[] = {
        {"the centre of a pixel", 0.375, 0.25, 1},
        {"between columns", 0.5, 0.25, 1.5},
        {"between rows", 0.125, 0.5, 5},
        {"the seam, from the left", 0.0, 0.25, 1.5},
        {"the seam, from the right", 1.0, 0.25, 1.5},
        {"wrapped around once", 1.375, 0.25, 1},
        {"wrapped around backwards", -0.625, 0.25, 1},
        {"the top edge", 0.125, 0, 0},
        {"above the top", 0.125, -3, 0},
        {"the bottom edge", 0.125, 1, 10},
        {"below the bottom", 0.125, 7, 10},
    };
    for (const BilinearCase &each : cases)
        EXPECT_NEAR(bilinear(image, each.u, each.v), each.expected, kTolerance) << each.what;
}

TEST(Bilinear, ExtremeCoordinatesStayInTheImage) {
    const HostImage image = greyImage(2, 2, {1, 2, 3, 4});
    for (const double odd : {kNaN, kInfinity, -kInfinity, 1e300, -1e300}) {
        EXPECT_GE(bilinear(image, odd, 0.5), 1);
        EXPECT_LE(bilinear(image, odd, 0.5), 4);
        EXPECT_GE(bilinear(image, 0.5, odd), 1);
        EXPECT_LE(bilinear(image, 0.5, odd), 4);
    }
}

TEST(Pixel, OutsideTheImageIsTheNearestInside) {
    const HostImage image = greyImage(2, 2, {1, 2, 3, 4});
    const auto at = [&](int x, int y) {
        float colour[3];
        pixel(&image, x, y, colour);
        return colour[0];
    };
    EXPECT_EQ(at(0, 0), 1);
    EXPECT_EQ(at(1, 1), 4);
    EXPECT_EQ(at(-5, 0), 1);
    EXPECT_EQ(at(2, 0), 2);
    EXPECT_EQ(at(0, 99), 3);
    EXPECT_EQ(at(std::numeric_limits<int>::max(), std::numeric_limits<int>::min()), 2);
}

TEST(NullImage, IsBlackEverywhere) {
    float narrow[3] = {1, 1, 1};
    pixel(nullptr, 3, 4, narrow);
    double colour[3] = {1, 1, 1}, spot[3] = {1, 1, 1};
    sampleBilinear(nullptr, 0.5, 0.5, colour);
    sampleSpot(nullptr, 0.5, 0.5, 0.1, spot);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(narrow[i], 0);
        EXPECT_EQ(colour[i], 0);
        EXPECT_EQ(spot[i], 0);
    }
}

// A checkerboard with the next level of its pyramid, a single pixel with the mean.
TEST(Spot, BlendsThePyramidLevelsThatEncloseIt) {
    HostImage image = greyImage(2, 2, {0, 1, 1, 0});
    image.levels.push_back({.width = 1, .height = 1, .pixels = {0.5f}});
    const auto spot = [&](double size) {
        double colour[3];
        sampleSpot(&image, 0.25, 0.25, size, colour);
        return colour[0];
    };
    EXPECT_NEAR(spot(0), 0, kTolerance);
    EXPECT_NEAR(spot(0.5), 0, kTolerance); // exactly one pixel wide
    EXPECT_NEAR(spot(0.5 * std::numbers::sqrt2), 0.25, kTolerance);
    EXPECT_NEAR(spot(1), 0.5, kTolerance);
    EXPECT_NEAR(spot(1000), 0.5, kTolerance);
    EXPECT_NEAR(spot(kNaN), 0, kTolerance);
    EXPECT_NEAR(spot(-1), 0, kTolerance);
}

struct DirectionCase {
    const char *what;
    double direction[3];
    double u, v;
};

TEST(DirectionToImage, FollowsTheConvention) {
    const DirectionCase cases[] = {
        {"ahead", {0, 0, 1}, 0.5, 0.5},
        {"right", {1, 0, 0}, 0.75, 0.5},
        {"left", {-1, 0, 0}, 0.25, 0.5},
        {"up", {0, 1, 0}, 0.5, 0},
        {"down", {0, -5, 0}, 0.5, 1},
        {"half up", {0, 1, 1}, 0.5, 0.25},
        {"ahead to the right", {3, 0, 3}, 0.625, 0.5},
        {"no direction", {0, 0, 0}, 0.5, 0.5},
        {"not a number", {kNaN, 0, 1}, 0.5, 0.5},
    };
    for (const DirectionCase &each : cases) {
        double u, v;
        directionToImage(0, each.direction, &u, &v);
        EXPECT_NEAR(u, each.u, kTolerance) << each.what;
        EXPECT_NEAR(v, each.v, kTolerance) << each.what;
    }
}

TEST(DirectionToImage, BehindIsTheSeam) {
    const double left[3] = {-1e-9, 0, -1}, right[3] = {1e-9, 0, -1}, behind[3] = {0, 0, -1};
    double u, v;
    directionToImage(0, left, &u, &v);
    EXPECT_NEAR(u, 0, kTolerance);
    directionToImage(0, right, &u, &v);
    EXPECT_NEAR(u, 1, kTolerance);
    directionToImage(0, behind, &u, &v);
    EXPECT_GE(u, 0);
    EXPECT_LT(u, 1);
}

TEST(DirectionToImage, SeamAngleTurnsTheImage) {
    const double ahead[3] = {0, 0, 1};
    double u, v;
    directionToImage(std::numbers::pi / 2, ahead, &u, &v);
    EXPECT_NEAR(u, 0.25, kTolerance);
    directionToImage(-std::numbers::pi, ahead, &u, &v);
    EXPECT_NEAR(u, 0, kTolerance);
}

} // namespace
} // namespace velm::host::test
