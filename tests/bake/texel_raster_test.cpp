// Which triangles cover which texels.
#include "host/bake/texel_raster.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace velm::host {
namespace {

constexpr double kAreaError = 1e-3; // of many texels, each of which is rounded to single precision and may be left out

// A mesh of one triangle for each three UV coordinates.
Mesh meshOf(const std::vector<std::array<float, 2>> &uvs) {
    Mesh mesh;
    mesh.uvMaps.push_back({.name = "UV", .values = {uvs.begin(), uvs.end()}});
    for (std::uint32_t i = 0; i < uvs.size(); ++i) mesh.points.push_back({{uvs[i][0], uvs[i][1], 0}});
    for (std::uint32_t i = 0; i + 2 < uvs.size(); i += 3) mesh.triangles.push_back({{i, i + 1, i + 2}});
    return mesh;
}

bool all(std::uint32_t) { return true; }

// The sum of what each triangle covers, in texels.
std::vector<double> coveredAreas(const TexelRaster &raster) {
    std::vector<double> areas(raster.map().mesh().triangles.size());
    TileFragments fragments;
    for (int row = 0; row * kTileSize < raster.map().height(); ++row) {
        for (int column = 0; column * kTileSize < raster.map().width(); ++column) {
            raster.rasterise(column, row, fragments);
            for (std::size_t texel = 0; texel < kTilePixels; ++texel)
                for (const TexelFragment &fragment : fragments.of(texel))
                    areas[fragment.placed.triangle] += static_cast<double>(fragment.area);
        }
    }
    return areas;
}

TEST(TexelRaster, CoversTheAreaOfEachTriangle) {
    std::mt19937 generator(7);
    std::uniform_real_distribution<float> coordinate(0, 1);
    std::vector<std::array<float, 2>> uvs;
    for (int i = 0; i < 60; ++i) uvs.push_back({coordinate(generator), coordinate(generator)});
    const Mesh mesh = meshOf(uvs);
    const TexelMap map(mesh, mesh.uvMaps[0], 100, 70);
    const std::vector<double> areas = coveredAreas(TexelRaster(map, all));
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle)
        EXPECT_NEAR(areas[triangle],
                    std::fabs(map.triangleAt({.triangle = triangle, .shiftU = 0, .shiftV = 0}).signedArea()),
                    kAreaError)
            << triangle;
}

TEST(TexelRaster, FindsTheTriangleOfAnyPointInIt) {
    const Mesh mesh = meshOf({{0.03F, 0.1F}, {0.91F, 0.37F}, {0.2F, 0.11F}}); // a sliver
    const TexelMap map(mesh, mesh.uvMaps[0], 64, 64);
    const TexelRaster raster(map, all);
    const TexelTriangle triangle = map.triangleAt({.triangle = 0, .shiftU = 0, .shiftV = 0});
    std::mt19937 generator(3);
    std::uniform_real_distribution<double> number(0, 1);
    TileFragments fragments;
    for (int i = 0; i < 1000; ++i) {
        const double out = std::sqrt(number(generator)), across = number(generator);
        const TexelPoint point = triangle.at({1 - out, out * (1 - across), out * across});
        const int x = static_cast<int>(point.x), y = static_cast<int>(point.y);
        if (areaOf(clipToTexel(triangle, x, y)) < 1e-5) continue; // touches hardly more than a corner of the texel
        raster.rasterise(x / kTileSize, y / kTileSize, fragments);
        EXPECT_FALSE(fragments.of(static_cast<std::size_t>(y % kTileSize * kTileSize + x % kTileSize)).empty())
            << x << ", " << y;
    }
}

TEST(TexelRaster, RepeatsCoordinatesOutsideTheMap) {
    // The unit square moved by half of it, so that a quarter of it comes in at each corner.
    const Mesh mesh = meshOf({{0.5F, -0.5F}, {0.5F, 0.5F}, {1.5F, 0.5F}, {0.5F, -0.5F}, {1.5F, 0.5F}, {1.5F, -0.5F}});
    const TexelMap map(mesh, mesh.uvMaps[0], 40, 40);
    const TexelRaster raster(map, all);
    EXPECT_EQ(raster.repeated().count, 2u);
    const std::vector<double> areas = coveredAreas(raster);
    EXPECT_NEAR(areas[0], 800, kAreaError);
    EXPECT_NEAR(areas[1], 800, kAreaError);
    TileFragments fragments;
    raster.rasterise(0, 0, fragments);
    EXPECT_FALSE(fragments.of(0).empty()); // the upper left texel shows u = 1, v = 0
}

TEST(TexelRaster, CountsWhatIsTheMatter) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    const Mesh mesh = meshOf({{0, 0},
                              {0, 1},
                              {1, 1}, // clockwise, as triangles are from their front
                              {0, 0},
                              {1, 1},
                              {0, 1}, // mirrored
                              {0, 0},
                              {0, 0},
                              {1, 1}, // flat
                              {0, 0},
                              {0, 1},
                              {kNone, kNone}, // without coordinates
                              {0, 0},
                              {0, 2},
                              {1, 1}}); // beyond the map
    const TexelMap map(mesh, mesh.uvMaps[0], 8, 8);
    const TexelRaster raster(map, all);
    EXPECT_EQ(raster.mirrored().count, 1u);
    EXPECT_EQ(raster.mirrored().firstPolygon, 1u);
    EXPECT_EQ(raster.flat().firstPolygon, 2u);
    EXPECT_EQ(raster.missing().firstPolygon, 3u);
    EXPECT_EQ(raster.repeated().firstPolygon, 4u);
    EXPECT_FALSE(raster.isEmpty());
    EXPECT_TRUE(TexelRaster(map, [](std::uint32_t) { return false; }).isEmpty());
}

TEST(TexelRaster, RefusesTrianglesThatRepeatTheMapTooOften) {
    const Mesh mesh = meshOf({{0, 0}, {0, 200}, {1, 1}});
    const TexelMap map(mesh, mesh.uvMaps[0], 8, 8);
    EXPECT_THROW(TexelRaster(map, all), InputError);
}

TEST(TexelGeometry, MapsTheSquareToPolygonsWithEqualAreas) {
    const TexelTriangle triangle{{TexelPoint{-0.7, 0.1}, {1.4, 0.3}, {0.4, 1.9}}};
    const TexelPolygon polygon = clipToTexel(triangle, 0, 0);
    // The mean of the points is the polygon's centroid, and all are in the triangle and the texel.
    TexelPoint mean{0, 0}, centroid{0, 0};
    constexpr int kSide = 512;
    constexpr double kMean = 4.0 / kSide; // points are that far apart about the polygon's first corner
    for (int i = 0; i < kSide * kSide; ++i) {
        const int row = i / kSide, column = i % kSide;
        const TexelPoint point = pointIn(polygon, (column + 0.5) / kSide, (row + 0.5) / kSide);
        const CornerWeights weights = triangle.weightsAt(point);
        EXPECT_GE(std::min({weights[0], weights[1], weights[2]}), -1e-12);
        EXPECT_TRUE(point.x >= -1e-12 && point.x <= 1 + 1e-12 && point.y >= -1e-12 && point.y <= 1 + 1e-12);
        mean.x += point.x / (kSide * kSide);
        mean.y += point.y / (kSide * kSide);
    }
    for (std::size_t i = 2; i < polygon.count; ++i) {
        const TexelPoint &a = polygon.points[0], &b = polygon.points[i - 1], &c = polygon.points[i];
        const double share = std::fabs((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x)) / 2 / areaOf(polygon);
        centroid.x += share * (a.x + b.x + c.x) / 3;
        centroid.y += share * (a.y + b.y + c.y) / 3;
    }
    EXPECT_NEAR(mean.x, centroid.x, kMean);
    EXPECT_NEAR(mean.y, centroid.y, kMean);
}

} // namespace
} // namespace velm::host
