// Blending and mappings, against results computed by hand.
#include "host/services/blend.h"
#include "host/services/camera_view.h"
#include "host/services/services.h"
#include "host/services/uv_provider.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

namespace velm::host::test {
namespace {

constexpr double kPi = std::numbers::pi;

struct Blend {
    int mode;
    double top[3], bottom[3];
    double expected[3]; // at full opacity
};

const Blend kBlends[] = {
    {kBlendNormal, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.25, 0.5, 1}},
    {kBlendAdditive, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {1.25, 1, 1.25}},
    {kBlendSubtractive, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.75, 0, -0.75}},
    {kBlendMultiply, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.25, 0.25, 0.25}},
    {kBlendScreen, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {1, 0.75, 1}},
    {kBlendDarken, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.25, 0.5, 0.25}},
    {kBlendLighten, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {1, 0.5, 1}},
    {kBlendDifference, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.75, 0, 0.75}},
    {kBlendNegative, {0.25, 0.5, 0.75}, {0.25, 0.5, 0.75}, {0.5, 1, 0.5}},
    {kBlendColourDodge, {0.5, 0.75, 0}, {0.25, 0.125, 0.5}, {0.5, 0.5, 0.5}},
    {kBlendColourDodge, {1, 1, 1}, {0, 0.25, 3}, {0, 1, 3}},
    {kBlendColourDodge, {2, 2, 2}, {0, 0.25, 3}, {0, 1, 3}},
    {kBlendColourBurn, {0.5, 0.75, 1}, {0.75, 0.625, 0.5}, {0.5, 0.5, 0.5}},
    {kBlendColourBurn, {0, 0, 0}, {0, 0.75, 1}, {0, 0, 1}},
    {kBlendColourBurn, {-1, -1, -1}, {0, 0.75, 1}, {0, 0, 1}},
    {kBlendRed, {0.25, 0.5, 1}, {1, 0.75, 0}, {0.25, 0.75, 0}},
    {kBlendGreen, {0.25, 0.5, 1}, {1, 0.75, 0}, {1, 0.5, 0}},
    {kBlendBlue, {0.25, 0.5, 1}, {1, 0.75, 0}, {1, 0.75, 1}},
    {14, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.25, 0.5, 1}},
    {-1, {0.25, 0.5, 1}, {1, 0.5, 0.25}, {0.25, 0.5, 1}},
};

class BlendTest : public ::testing::TestWithParam<Blend> {};

TEST_P(BlendTest, FollowsItsFormulaAndTheOpacity) {
    const Blend &row = GetParam();
    double result[3];
    for (double opacity : {1.0, 0.0, 0.25}) {
        nodeUtilityFuncs()->blend(result, row.top, row.bottom, opacity, row.mode);
        for (int i = 0; i < 3; ++i)
            EXPECT_DOUBLE_EQ(result[i], row.bottom[i] + opacity * (row.expected[i] - row.bottom[i])) << row.mode;
    }
}

TEST_P(BlendTest, MayOverwriteItsArguments) {
    const Blend &row = GetParam();
    double top[3], bottom[3];
    std::memcpy(top, row.top, sizeof top);
    std::memcpy(bottom, row.bottom, sizeof bottom);
    blend(top, top, row.bottom, 1, row.mode);
    blend(bottom, row.top, bottom, 1, row.mode);
    for (int i = 0; i < 3; ++i) {
        EXPECT_DOUBLE_EQ(top[i], row.expected[i]);
        EXPECT_DOUBLE_EQ(bottom[i], row.expected[i]);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, BlendTest, ::testing::ValuesIn(kBlends));

constexpr auto kPlanar = &HostNodeUtilityFuncs::planarMapping;
constexpr auto kSpherical = &HostNodeUtilityFuncs::sphericalMapping;
constexpr auto kCylindrical = &HostNodeUtilityFuncs::cylindricalMapping;
constexpr auto kCubic = &HostNodeUtilityFuncs::cubicMapping;

struct MappedRow {
    void (*HostNodeUtilityFuncs::*mapping)(const double[3], int, double *, double *);
    int axis;
    double position[3];
    double u, v;
};

const MappedRow kMapped[] = {
    {kPlanar, 0, {9, 0.1, 0.2}, 0.7, 0.4},
    {kPlanar, 1, {0.1, 9, 0.2}, 0.6, 0.3},
    {kPlanar, 2, {0.1, 0.2, 9}, 0.6, 0.3},
    {kPlanar, 5, {0.1, 0.2, 9}, 0.6, 0.3},
    // Poles, seam and quarter turns about Y
    {kSpherical, 1, {0, 2, 0}, 0.5, 0},
    {kSpherical, 1, {0, -2, 0}, 0.5, 1},
    {kSpherical, 1, {0, 0, 3}, 0.5, 0.5},
    {kSpherical, 1, {3, 0, 0}, 0.75, 0.5},
    {kSpherical, 1, {-3, 0, 0}, 0.25, 0.5},
    {kSpherical, 1, {0, 0, -3}, 0, 0.5},
    {kSpherical, 1, {-0.0, 0, -3}, 0, 0.5},
    {kSpherical, 1, {0, 1, 1}, 0.5, 0.25},
    {kSpherical, 1, {0, 0, 0}, 0.5, 0.5},
    {kSpherical, 0, {0, 1, 0}, 0.5, 0.5},
    {kSpherical, 0, {0, 0, 1}, 0.75, 0.5},
    {kSpherical, 2, {1, 0, 0}, 0.5, 0.5},
    {kSpherical, 2, {0, 1, 0}, 0.75, 0.5},
    {kSpherical, 2, {0, 0, 1}, 0.5, 0},
    {kCylindrical, 1, {1, 0.25, 0}, 0.75, 0.25},
    {kCylindrical, 1, {0, -3, 0}, 0.5, 3.5},
    {kCylindrical, 0, {0.5, 1, 0}, 0.5, 0},
    // The image is unmirrored on both sides
    {kCubic, 0, {1, 0.1, 0.2}, 0.7, 0.4},
    {kCubic, 0, {-1, 0.1, 0.2}, 0.3, 0.4},
    {kCubic, 1, {0.1, 1, 0.2}, 0.6, 0.3},
    {kCubic, 1, {0.1, -1, 0.2}, 0.4, 0.3},
    {kCubic, 2, {0.1, 0.2, -1}, 0.6, 0.3},
    {kCubic, 2, {0.1, 0.2, 1}, 0.4, 0.3},
    {kCubic, -1, {0.1, -1, 0.2}, 0.4, 0.3},
    {kCubic, 3, {-1, 0.1, 0.2}, 0.3, 0.4},
};

TEST(Mappings, GiveTheExpectedCoordinates) {
    for (const MappedRow &row : kMapped) {
        double u = -9, v = -9;
        (nodeUtilityFuncs()->*row.mapping)(row.position, row.axis, &u, &v);
        EXPECT_NEAR(u, row.u, 1e-12) << &row - kMapped;
        EXPECT_NEAR(v, row.v, 1e-12) << &row - kMapped;
    }
}

TEST(Mappings, DirectionsTurnWithTheSeam) {
    const struct {
        double seam, direction[3], u, v;
    } kRows[] = {
        {0, {0, 0, 1}, 0.5, 0.5},        {0, {5, 0, 0}, 0.75, 0.5},       {0, {0, 0, -1}, 0, 0.5},
        {kPi / 2, {5, 0, 0}, 0.5, 0.5},  {kPi / 2, {0, 0, 1}, 0.25, 0.5}, {-kPi / 2, {1, 0, 0}, 0, 0.5},
        {2 * kPi, {1, 0, 0}, 0.75, 0.5}, {0, {0, 1, 0}, 0.5, 0},          {0, {0, -1, 0}, 0.5, 1},
    };
    for (const auto &row : kRows) {
        double u = -9, v = -9;
        nodeUtilityFuncs()->directionMapping(row.seam, row.direction, &u, &v);
        EXPECT_NEAR(u, row.u, 1e-12) << &row - kRows;
        EXPECT_NEAR(v, row.v, 1e-12) << &row - kRows;
        EXPECT_LT(u, 1);
    }
}

TEST(Mappings, TheFrontMappingProjectsThroughTheCamera) {
    CameraView view;
    view.position[2] = -5;
    view.tanHalfWidth = 2;
    view.tanHalfHeight = 1;
    setCameraView(view);
    double u = 0, v = 0;
    const double middle[3] = {0, 0, 0}, corner[3] = {10, 5, 0}, beside[3] = {3, 0, -5};
    nodeUtilityFuncs()->frontMapping(middle, &u, &v);
    EXPECT_DOUBLE_EQ(u, 0.5);
    EXPECT_DOUBLE_EQ(v, 0.5);
    nodeUtilityFuncs()->frontMapping(corner, &u, &v); // the picture's upper right corner
    EXPECT_DOUBLE_EQ(u, 1);
    EXPECT_DOUBLE_EQ(v, 0);
    nodeUtilityFuncs()->frontMapping(beside, &u, &v);
    EXPECT_DOUBLE_EQ(u, 0.5);
    double matrix[9];
    nodeUtilityFuncs()->cameraMatrix(matrix);
    EXPECT_EQ(matrix[8], 1);
    EXPECT_EQ(matrix[1], 0);
    setCameraView({});
}

const char *asked = "unset";
bool onMap(const ShadingSample *sample, const char *mapName, double *u, double *v) {
    asked = mapName;
    if (sample->polygonNumber < 0) return false;
    *u = 0.25;
    *v = 0.75;
    return true;
}

TEST(Mappings, UvMapsComeFromTheProvider) {
    ShadingSample sample{};
    double u = 7, v = 7;
    EXPECT_EQ(nodeUtilityFuncs()->uvMapping("Map", &sample, &u, &v), 0);
    setUvProvider({onMap});
    EXPECT_NE(nodeUtilityFuncs()->uvMapping("Map", &sample, &u, &v), 0);
    EXPECT_STREQ(asked, "Map");
    EXPECT_EQ(u, 0.25);
    EXPECT_EQ(v, 0.75);
    EXPECT_NE(nodeUtilityFuncs()->uvMapping("", &sample, &u, &v), 0);
    EXPECT_EQ(asked, nullptr);
    sample.polygonNumber = -1;
    EXPECT_EQ(nodeUtilityFuncs()->uvMapping("Map", &sample, &u, &v), 0);
    setUvProvider({});
}

} // namespace
} // namespace velm::host::test
