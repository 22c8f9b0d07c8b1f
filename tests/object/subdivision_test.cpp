// Subdivision surfaces of objects.
#include "tests/object/object_bytes.h"

#include "host/object/subdivision.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace velm::host::test {
namespace {

using Point = std::array<float, 3>;
using Polygons = std::vector<std::vector<std::size_t>>;

constexpr float kTolerance = 2e-6F; // a few roundings of numbers up to 2
constexpr std::uint64_t kMuchMemory = 1U << 30;

// The points of the cube from -1 to 1, by bits of their number, and its sides, clockwise as seen from outside.
std::vector<float> cubePoints() {
    std::vector<float> points;
    for (int i = 0; i < 8; ++i)
        for (int axis = 0; axis < 3; ++axis) points.push_back((i >> axis & 1) != 0 ? 1.0F : -1.0F);
    return points;
}
const Polygons kCube = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
// A square of 2 x 2 squares with the corners (0, 0) and (2, 2), in the plane z = 0.
const std::vector<float> kGrid = {0, 0, 0, 1, 0, 0, 2, 0, 0, 0, 1, 0, 1, 1, 0, 2, 1, 0, 0, 2, 0, 1, 2, 0, 2, 2, 0};
const Polygons kGridSquares = {{0, 3, 4, 1}, {1, 4, 5, 2}, {3, 6, 7, 4}, {4, 7, 8, 5}};

ObjectGeometry read(const std::string &chunks, int level, std::uint64_t mostBytes = kMuchMemory) {
    ObjectGeometry geometry = readObject(objectFile(chunks), "a.lwo");
    subdivide(geometry, {.level = level, .mostBytes = mostBytes}, "a.lwo");
    return geometry;
}

std::vector<std::string> lossesOf(const ObjectGeometry &geometry) {
    std::vector<std::string> messages;
    for (const Losses::Text &loss : geometry.losses.texts()) messages.push_back(loss.message);
    return messages;
}

std::vector<std::size_t> drawn(const ObjectLayer &layer) {
    std::vector<std::size_t> polygons;
    forEachDrawnPolygon(layer, [&](std::size_t polygon) { polygons.push_back(polygon); });
    return polygons;
}

// The indices of the points of drawn polygons.
std::set<std::uint32_t> usedPoints(const ObjectLayer &layer) {
    std::set<std::uint32_t> used;
    for (const std::size_t polygon : drawn(layer))
        used.insert(layer.corners.begin() + static_cast<std::ptrdiff_t>(layer.begin(polygon)),
                    layer.corners.begin() + static_cast<std::ptrdiff_t>(layer.ends[polygon]));
    return used;
}

bool isNear(const Point &a, const Point &b) {
    return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]) < 3 * kTolerance;
}

// The number of points of drawn polygons at a position.
std::ptrdiff_t pointsAt(const ObjectLayer &layer, const Point &place) {
    const std::set<std::uint32_t> used = usedPoints(layer);
    return std::count_if(used.begin(), used.end(),
                         [&](std::uint32_t point) { return isNear(layer.points[point], place); });
}

TEST(Subdivision, EachLevelQuadruplesThePolygons) {
    for (const char *type : {"PTCH", "SUBD"}) {
        for (int level = 1; level <= 4; ++level) {
            const ObjectLayer layer = read(pointsChunk(cubePoints()) + polygonsChunk(type, kCube), level).layers[0];
            const std::size_t polygons = std::size_t{6} << (2 * level);
            EXPECT_EQ(drawn(layer).size(), polygons);
            EXPECT_EQ(usedPoints(layer).size(), polygons + 2) << "Euler's formula for a closed surface of quadrangles";
        }
    }
}

TEST(Subdivision, LevelZeroIsTheCage) {
    const ObjectGeometry geometry = read(pointsChunk(cubePoints()) + polygonsChunk("PTCH", kCube), 0);
    EXPECT_EQ(drawn(geometry.layers[0]), (std::vector<std::size_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(lossesOf(geometry).empty());
}

// The limit of a point v with n neighbours e and n opposite points f is (n n v + 4 sum(e) + sum(f)) / (n (n + 5))
// (Halstead, Kass and DeRose, "Efficient, Fair Interpolation Using Catmull-Clark Surfaces", 1993).
TEST(Subdivision, PointsOfACubeAreOnTheLimitSurface) {
    for (int level = 1; level <= 3; ++level) {
        const ObjectLayer layer = read(pointsChunk(cubePoints()) + polygonsChunk("SUBD", kCube), level).layers[0];
        constexpr float kCorner = (9 + 4 - 1) / 24.0F;
        EXPECT_EQ(pointsAt(layer, {kCorner, kCorner, kCorner}), 1) << level;
        EXPECT_EQ(pointsAt(layer, {-kCorner, kCorner, -kCorner}), 1) << level;
        // The middle of a side: after one subdivision its point is 1 from the origin, its four neighbours 3/4, and the
        // points opposite 5/9.
        constexpr float kMiddle = (16 + 4 * 4 * 0.75F + 4 * 5 / 9.0F) / 36;
        EXPECT_EQ(pointsAt(layer, {0, 0, kMiddle}), 1) << level;
        EXPECT_EQ(pointsAt(layer, {0, -kMiddle, 0}), 1) << level;
    }
}

TEST(Subdivision, ACubeKeepsItsSymmetry) {
    const ObjectLayer layer = read(pointsChunk(cubePoints()) + polygonsChunk("PTCH", kCube), 2).layers[0];
    for (const std::uint32_t number : usedPoints(layer)) {
        const Point p = layer.points[number];
        EXPECT_EQ(pointsAt(layer, {-p[0], p[1], p[2]}), 1);
        EXPECT_EQ(pointsAt(layer, {p[1], p[2], p[0]}), 1);
    }
}

TEST(Subdivision, PolygonsKeepTheirFront) {
    const ObjectLayer layer = read(pointsChunk(cubePoints()) + polygonsChunk("PTCH", kCube), 2).layers[0];
    for (const std::size_t polygon : drawn(layer)) {
        std::array<Point, 3> p;
        for (std::size_t i = 0; i < 3; ++i) p[i] = layer.points[layer.corners[layer.begin(polygon) + i]];
        double volume = 0; // six times that of the tetrahedron of the origin and the corners
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
            volume += p[0][i] * (p[1][j] * p[2][k] - p[1][k] * p[2][j]);
        }
        EXPECT_GT(volume, 0) << polygon;
    }
}

// A border is a cubic B-spline: the limit of its point v between a and b is (a + 4 v + b) / 6.
TEST(Subdivision, BordersAreSmoothCurves) {
    const ObjectLayer layer =
        read(pointsChunk({0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0}) + polygonsChunk("PTCH", {{0, 1, 2, 3}}), 3).layers[0];
    EXPECT_EQ(drawn(layer).size(), 64U);
    EXPECT_EQ(pointsAt(layer, {1 / 6.0F, 1 / 6.0F, 0}), 1);
    EXPECT_EQ(pointsAt(layer, {5 / 6.0F, 1 / 6.0F, 0}), 1);
}

TEST(Subdivision, PolygonsOfAnyNumberOfCorners) {
    const ObjectLayer triangle =
        read(pointsChunk({0, 0, 0, 0, 1, 0, 1, 1, 0}) + polygonsChunk("PTCH", {{0, 1, 2}}), 2).layers[0];
    EXPECT_EQ(drawn(triangle).size(), 12U);
    std::vector<float> points;
    std::vector<std::size_t> polygon;
    constexpr std::size_t kCorners = 1000;
    for (std::size_t i = 0; i < kCorners; ++i) {
        const double angle = -2 * M_PI * static_cast<double>(i) / kCorners;
        points.insert(points.end(), {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0});
        polygon.push_back(i);
    }
    const ObjectLayer disc = read(pointsChunk(points) + polygonsChunk("SUBD", {polygon}), 2).layers[0];
    EXPECT_EQ(drawn(disc).size(), 4 * kCorners);
    EXPECT_EQ(pointsAt(disc, {0, 0, 0}), 1);
}

TEST(Subdivision, SurfacesOfPolygonsHaveNoCrackBetweenThem) {
    const ObjectGeometry geometry =
        read(tagsChunk({"Red", "Blue"}) + pointsChunk(cubePoints()) + polygonsChunk("PTCH", kCube) +
                 polygonTagsChunk("SURF", {{0, 0}, {1, 1}, {2, 1}, {3, 0}}),
             2);
    std::map<std::string, int> counts;
    for (const std::size_t polygon : drawn(geometry.layers[0]))
        ++counts[geometry.surfaceOf(geometry.layers[0], polygon)];
    EXPECT_EQ(counts, (std::map<std::string, int>{{"Red", 32}, {"Blue", 32}, {"Default", 32}}));
    EXPECT_EQ(usedPoints(geometry.layers[0]).size(), 98U) << "no point is there twice";
    EXPECT_EQ(surfacesOfPolygons(geometry), (std::vector<std::string>{"Red", "Blue", "Default"}));
}

TEST(Subdivision, PlainPolygonsStayAsTheyAre) {
    // The cube stands on a plain square that shares four of its points, and whose number is between those of patches.
    const ObjectLayer layer = read(pointsChunk(cubePoints()) + polygonsChunk("PTCH", {kCube[0], kCube[1], kCube[2]}) +
                                       polygonsChunk("FACE", {{0, 1, 5, 4}, {0, 1, 2}}) +
                                       polygonsChunk("SUBD", {kCube[3], kCube[4], kCube[5]}),
                                   1)
                                  .layers[0];
    EXPECT_EQ(drawn(layer).size(), 26U);
    EXPECT_EQ(layer.corners[layer.begin(3)], 0U);
    EXPECT_EQ(pointsAt(layer, {-1, -1, -1}), 1) << "of the square";
    EXPECT_EQ(pointsAt(layer, {0.5F, 0.5F, 0.5F}), 1) << "both kinds of cage continue each other";
}

TEST(Subdivision, HiddenLayersAreLeftAlone) {
    const ObjectGeometry geometry =
        read(layerChunk(0, 1, "") + pointsChunk(cubePoints()) + polygonsChunk("PTCH", kCube), 3);
    EXPECT_EQ(drawn(geometry.layers[0]).size(), 6U);
}

// ---- Vertex maps ----

constexpr std::uint32_t kLinear = 0, kSmooth = 1, kLinearCorners = 2;

std::string mapProperties(std::uint32_t code) { return chunk("VMPA", big(code, 4) + big(6, 4)); }

// A UV map whose coordinates are x and y of the points.
std::vector<MapValue> positionsOf(const std::vector<float> &points) {
    std::vector<MapValue> values;
    for (std::size_t i = 0; 3 * i < points.size(); ++i)
        values.push_back({.point = i, .numbers = {points[3 * i], points[3 * i + 1]}});
    return values;
}

// The values of the map "M" at the corners of drawn polygons, by polygon and point.
std::map<std::pair<std::size_t, std::uint32_t>, std::vector<float>> valuesOf(const ObjectLayer &layer) {
    std::map<std::uint32_t, std::vector<float>> ofPoints;
    std::map<std::pair<std::size_t, std::uint32_t>, std::vector<float>> ofCorners, all;
    for (const ObjectVertexMap &map : layer.maps)
        for (std::size_t i = 0; i < map.points.size(); ++i) {
            const auto begin = map.numbers.begin() + static_cast<std::ptrdiff_t>(i * map.size);
            const std::vector<float> numbers(begin, begin + map.size);
            if (map.isOfCorners)
                ofCorners[{map.polygons[i], map.points[i]}] = numbers;
            else
                ofPoints[map.points[i]] = numbers;
        }
    for (const std::size_t polygon : drawn(layer))
        for (std::size_t i = layer.begin(polygon); i < layer.ends[polygon]; ++i) {
            const std::pair corner(polygon, layer.corners[i]);
            all[corner] = ofCorners.contains(corner) ? ofCorners.at(corner) : ofPoints[layer.corners[i]];
        }
    return all;
}

bool hasValueNear(const ObjectLayer &layer, const std::array<float, 2> &uv) {
    return std::ranges::any_of(valuesOf(layer), [&](const auto &one) {
        return std::abs(one.second[0] - uv[0]) + std::abs(one.second[1] - uv[1]) < kTolerance;
    });
}

ObjectLayer grid(std::uint32_t code, const std::string &more = "") {
    return read(pointsChunk(kGrid) + mapProperties(code) + mapChunk("TXUV", 2, "M", positionsOf(kGrid)) +
                    polygonsChunk("PTCH", kGridSquares) + more,
                2)
        .layers[0];
}

TEST(Subdivision, SmoothMapsMoveLikeThePoints) {
    const ObjectLayer layer = grid(kSmooth);
    for (const auto &[corner, uv] : valuesOf(layer)) {
        EXPECT_NEAR(uv[0], layer.points[corner.second][0], kTolerance);
        EXPECT_NEAR(uv[1], layer.points[corner.second][1], kTolerance);
    }
}

TEST(Subdivision, LinearMapsKeepTheirCorners) {
    const ObjectLayer layer = grid(kLinear);
    std::set<std::pair<long, long>> found; // in eighths
    for (const auto &[corner, uv] : valuesOf(layer)) found.insert({std::lround(uv[0] * 8), std::lround(uv[1] * 8)});
    EXPECT_EQ(found.size(), 81U) << "9 x 9 values at equal distances";
    EXPECT_TRUE(hasValueNear(layer, {0, 0}) && hasValueNear(layer, {2, 2}) && hasValueNear(layer, {0.25F, 1}));
}

TEST(Subdivision, CornersOfMapsMayBeLinear) {
    EXPECT_TRUE(hasValueNear(grid(kLinearCorners), {0, 0}));
    EXPECT_FALSE(hasValueNear(grid(kSmooth), {0, 0}));
}

TEST(Subdivision, MapsWithoutPropertiesAreLinear) {
    const ObjectLayer layer =
        read(pointsChunk(kGrid) + mapProperties(kSmooth) + mapChunk("WGHT", 1, "W", {}) +
                 mapChunk("TXUV", 2, "M", positionsOf(kGrid)) + polygonsChunk("PTCH", kGridSquares),
             2)
            .layers[0];
    EXPECT_TRUE(hasValueNear(layer, {0, 0})) << "the properties are those of the weight map";
}

TEST(Subdivision, SeamsOfMapsStay) {
    // The last square has coordinates of its own, 10 further to the right.
    std::vector<CornerMapValue> values;
    for (const std::size_t point : kGridSquares[3])
        values.push_back({.point = point, .polygon = 3, .numbers = {kGrid[3 * point] + 10, kGrid[3 * point + 1]}});
    constexpr float kBetween = 10.5F;
    for (const std::uint32_t code : {kLinear, kSmooth}) {
        const ObjectLayer layer = grid(code, mapProperties(code) + cornerMapChunk("TXUV", 2, "M", values));
        std::size_t moved = 0;
        std::set<std::size_t> polygons;
        for (const auto &[corner, uv] : valuesOf(layer)) {
            EXPECT_TRUE(uv[0] < kBetween - 8 || uv[0] > kBetween) << "nothing is interpolated across the seam";
            if (uv[0] < kBetween) continue;
            ++moved;
            polygons.insert(corner.first);
        }
        EXPECT_EQ(polygons.size(), 16U) << code;
        EXPECT_EQ(moved, 64U) << code;
    }
    EXPECT_TRUE(hasValueNear(grid(kLinear, cornerMapChunk("TXUV", 2, "M", values)), {11, 1}));
}

TEST(Subdivision, TheLastOfSeveralValuesOfACornerCounts) {
    const ObjectLayer layer = grid(kLinear, cornerMapChunk("TXUV", 2, "M",
                                                           {{.point = 0, .polygon = 0, .numbers = {5, 5}},
                                                            {.point = 8, .polygon = 3, .numbers = {6, 6}},
                                                            {.point = 0, .polygon = 0, .numbers = {7, 7}}}));
    EXPECT_FALSE(hasValueNear(layer, {5, 5}));
    EXPECT_TRUE(hasValueNear(layer, {6, 6}) && hasValueNear(layer, {7, 7}));
}

TEST(Subdivision, PolygonsWithoutAllValuesHaveNone) {
    std::vector<MapValue> values = positionsOf(kGrid);
    values.pop_back(); // of the last square
    const ObjectLayer layer = read(pointsChunk(kGrid) + mapProperties(kSmooth) + mapChunk("TXUV", 2, "M", values) +
                                       polygonsChunk("PTCH", kGridSquares),
                                   1)
                                  .layers[0];
    std::size_t mapped = 0;
    for (const auto &[corner, uv] : valuesOf(layer))
        if (!std::isnan(uv[0])) ++mapped;
    EXPECT_EQ(mapped, 48U) << "three squares";
}

TEST(Subdivision, ColoursAndWeightsAreInterpolated) {
    const ObjectLayer layer =
        read(
            pointsChunk(kGrid) +
                mapChunk("RGBA", 4, "M", {{0, {1, 0, 0, 1}}, {1, {0, 0, 0, 1}}, {3, {0, 0, 0, 1}}, {4, {0, 1, 0, 0}}}) +
                polygonsChunk("PTCH", kGridSquares),
            1)
            .layers[0];
    std::set<std::vector<float>> found;
    for (const auto &[corner, numbers] : valuesOf(layer))
        if (!std::isnan(numbers[0])) found.insert(numbers);
    EXPECT_TRUE(found.contains({0.25F, 0.25F, 0, 0.75F})) << "the middle of the first square";
    EXPECT_EQ(found.size(), 6U) << "three of corners, two of edges, and the middle";
}

// ---- Unusual cages, and limits ----

TEST(Subdivision, RepeatedCornersAreOne) {
    const ObjectGeometry geometry =
        read(pointsChunk(kGrid) + polygonsChunk("PTCH", {{0, 3, 4, 4}, {1, 4, 4, 1}, {8, 8, 8}, {7, 8}}), 1);
    EXPECT_EQ(drawn(geometry.layers[0]).size(), 3U);
    EXPECT_TRUE(lossesOf(geometry).empty());
}

TEST(Subdivision, PolygonsWithAPointTwiceAreLeftOut) {
    const ObjectGeometry geometry =
        read(pointsChunk(kGrid) + polygonsChunk("SUBD", {{0, 3, 4, 1}, {1, 4, 1, 2}, {4, 7, 8, 7}}), 1);
    EXPECT_EQ(drawn(geometry.layers[0]).size(), 4U);
    EXPECT_EQ(lossesOf(geometry), (std::vector<std::string>{"2 polygons of subdivision surfaces have a point twice and "
                                                            "are left out (the first: polygon 1 of layer 0)"}));
}

TEST(Subdivision, CagesNeedNotBeSurfaces) {
    // Three squares at one edge, a polygon that is there twice, once turned, and cubes that touch at a point.
    for (const Polygons &polygons :
         {Polygons{{0, 3, 4, 1}, {3, 4, 5, 2}, {4, 3, 6, 7}}, Polygons{{0, 3, 4, 1}, {1, 4, 3, 0}, {0, 3, 4, 1}},
          Polygons{{0, 3, 4, 1}, {4, 7, 8, 5}}}) {
        const ObjectLayer layer = read(pointsChunk(kGrid) + polygonsChunk("PTCH", polygons), 2).layers[0];
        EXPECT_EQ(drawn(layer).size(), 16 * polygons.size());
        for (const std::uint32_t point : usedPoints(layer)) {
            const Point &p = layer.points[point];
            EXPECT_TRUE(p[0] >= 0 && p[0] <= 2 && p[1] >= 0 && p[1] <= 2 && p[2] == 0) << "within the cage";
        }
    }
}

TEST(Subdivision, CagesThatCannotBeSubdividedAreDrawn) {
    constexpr std::size_t kFaces = 65536; // around one point: one more than OpenSubdiv supports
    std::vector<float> points(3 * (kFaces + 1));
    std::string polygons = "SUBD";
    for (std::size_t i = 1; i <= kFaces; ++i) {
        const std::size_t next = i % kFaces + 1;
        polygons += words({3, 0}) + (i < 0xff00 ? big(i, 2) : big(0xff000000 + i, 4)) +
                    (next < 0xff00 ? big(next, 2) : big(0xff000000 + next, 4));
    }
    const ObjectGeometry geometry = read(pointsChunk(points) + chunk("POLS", polygons), 1);
    EXPECT_EQ(drawn(geometry.layers[0]).size(), kFaces);
    EXPECT_EQ(lossesOf(geometry),
              (std::vector<std::string>{"65536 polygons of subdivision surfaces are drawn as they are, since their "
                                        "control cages cannot be subdivided (the first: polygon 0 of layer 0)"}));
}

TEST(Subdivision, WeightsOfPatchesAreReported) {
    const std::string cage = pointsChunk(kGrid) + polygonsChunk("PTCH", kGridSquares);
    EXPECT_EQ(lossesOf(read(cage + mapChunk("MNVW", 1, "Subpatch Weight", {{0, {0.5F}}}), 1)),
              (std::vector<std::string>{"a map of subpatch weights is ignored (layer 0)"}));
    EXPECT_TRUE(lossesOf(read(cage + mapChunk("MNVW", 1, "Subpatch Weight", {{0, {0}}}), 1)).empty());
}

TEST(Subdivision, MemoryIsLimited) {
    const auto message = [](int level) {
        return errorOf([&] {
            const std::string layer = pointsChunk(cubePoints()) + polygonsChunk("PTCH", kCube);
            read(layerChunk(0, 0, "") + layer + layerChunk(1, 0, "") + layer, level, 1U << 20);
        });
    };
    EXPECT_EQ(message(3), "");
    EXPECT_EQ(message(5), "a.lwo: the object's subdivision surfaces have 12288 polygons at level 5, which take about 5 "
                          "MiB of memory; 1 MiB are allowed. Choose a lower level (see --subdivision)");
}

} // namespace
} // namespace velm::host::test
