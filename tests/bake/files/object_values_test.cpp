// Values of meshes at the points of the LightWave objects that the meshes were read from.
#include "host/bake/files/object_values.h"

#include "host/io/files.h"
#include "tests/bake/files/position_values.h"
#include "tests/object/object_bytes.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace velm::host::test {
namespace {

constexpr std::uint64_t kMuch = 1U << 30;

std::array<double, 1> weightAt(const Vec3 &p) { return {0.25 + 0.5 * p.x - 0.125 * p.y + 2 * p.z}; }

struct ObjectValuesTest : testing::Test {
    // Reads the object as a mesh, gives it values by position, and writes them as the map "AO".
    std::string baked(const std::string &bytes, const Transform &transform = {}, std::optional<int> layer = {},
                      int subdivision = 0) {
        const std::string file = directory.write("made.lwo", bytes);
        mesh.emplace(readMesh(file, transform, layer, subdivision));
        smoothNormals(*mesh, std::vector<double>(mesh->materials.size(), 30)); // splits vertices, as the renderer does
        const ObjectGeometry geometry = readObject(bytes, file);
        return withVertexMap(bytes, file, geometry,
                             {.type = fourCC("WGHT"),
                              .size = 1,
                              .name = "AO",
                              .tolerance = kEqualValues,
                              .layers = objectValues(*mesh, valuesOfPositions(*mesh, transform, 1, weightAt), geometry,
                                                     {.file = file,
                                                      .layer = layer,
                                                      .subdivision = subdivision,
                                                      .mostBytes = kMuch,
                                                      .transform = transform})});
    }

    // The largest coordinate of the mesh, to which rounding errors are proportional; at least 1.
    double size() const {
        double most = 1;
        for (const HostPoint &point : mesh->points)
            for (const float coordinate : point.position) most = std::max(most, std::abs(double{coordinate}));
        return most;
    }

    const TemporaryDirectory directory;
    std::optional<Mesh> mesh; // the last one that was baked
};

// Expects each value of the map to be that of the point's position; gives the number of values.
std::size_t expectValuesOfPoints(const std::string &bytes, double tolerance = kRoundingError) {
    std::size_t count = 0;
    const ObjectGeometry geometry = readObject(bytes, "baked.lwo");
    for (const ObjectLayer &layer : geometry.layers)
        for (const ObjectVertexMap &map : layer.maps) {
            if (map.name != "AO") continue;
            for (std::size_t i = 0; i < map.points.size(); ++i, ++count) {
                const auto &p = layer.points[map.points[i]];
                EXPECT_NEAR(double{map.numbers[i]}, weightAt({p[0], p[1], p[2]})[0], tolerance);
            }
        }
    return count;
}

const std::string kBody = pointsChunk(kSixPoints) + polygonsChunk("FACE", kSquareAndTriangle);

// The corners of a cube, and its sides.
std::string cube(const std::string &type) {
    std::vector<float> points;
    for (const float z : {-1.0F, 1.0F})
        for (const float y : {-1.0F, 1.0F})
            for (const float x : {-1.0F, 1.0F}) points.insert(points.end(), {x, y, z});
    return objectFile(
        tagsChunk({"A", "B"}) + pointsChunk(points) +
        polygonsChunk(type, {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}) +
        polygonTagsChunk("SURF", {{0, 0}, {1, 1}, {2, 0}, {3, 0}, {4, 0}, {5, 1}}));
}

TEST_F(ObjectValuesTest, GiveEachPointItsValue) {
    EXPECT_EQ(expectValuesOfPoints(baked(objectFile(kBody))), 5U); // no polygon has one of the points
}

TEST_F(ObjectValuesTest, DoNotDependOnThePlacing) {
    for (const Double3 &scale : {Double3{2, 2, 2}, Double3{-1, 1, 3}}) {
        const Transform transform({.position = {3, -2, 1}, .rotation = {30, 20, 10}, .scale = scale});
        EXPECT_EQ(expectValuesOfPoints(baked(objectFile(kBody), transform)), 5U);
    }
}

TEST_F(ObjectValuesTest, LeaveOutLayersThatAreNotDrawn) {
    const std::string object =
        objectFile(layerChunk(0, 0, "") + kBody + layerChunk(1, 1, "hidden") + kBody + layerChunk(2, 0, "") + kBody);
    EXPECT_EQ(expectValuesOfPoints(baked(object)), 10U);
    const std::string one = baked(object, {}, 1);
    EXPECT_EQ(expectValuesOfPoints(one), 5U);
    EXPECT_FALSE(readObject(one, "one.lwo").layers[1].maps.empty());
}

TEST_F(ObjectValuesTest, SkipCornersThatTheMeshDoesNotHave) {
    // A line, a polygon without an area, and a point in the middle of an edge.
    const std::string object = objectFile(pointsChunk({0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0, 2, 0, 0, 0.5F, 0, 0}) +
                                          polygonsChunk("FACE", {{0, 1}, {0, 5, 3}, {0, 1, 2, 3, 5}, {3, 2, 4}}));
    EXPECT_GE(expectValuesOfPoints(baked(object)), 5U);
}

TEST_F(ObjectValuesTest, GiveCagesTheValuesOfTheirSurface) {
    for (const char *type : {"PTCH", "SUBD"}) {
        const std::string object = cube(type);
        const std::vector<ObjectVertexMap> maps = readObject(baked(object, {}, {}, 2), "baked.lwo").layers[0].maps;
        ASSERT_EQ(maps.size(), 1U);
        ASSERT_EQ(maps[0].points.size(), 8U);
        const ObjectGeometry geometry = readObject(object, "cube.lwo");
        for (std::size_t i = 0; i < 8; ++i) {
            // (9 v + 4 e + f) / 24 for three edges, with e the sum of the neighbours and f that of the points opposite
            // in each side (Halstead, Kass and DeRose, "Efficient, Fair Interpolation using Catmull-Clark Surfaces").
            constexpr double kToLimit = (9.0 + 4 - 1) / 24;
            const auto &p = geometry.layers[0].points[maps[0].points[i]];
            EXPECT_NEAR(double{maps[0].numbers[i]}, weightAt({kToLimit * p[0], kToLimit * p[1], kToLimit * p[2]})[0],
                        kRoundingError);
        }
    }
    EXPECT_EQ(expectValuesOfPoints(baked(cube("PTCH"), {}, {}, 0)), 8U) << "the cage itself is drawn at level 0";
}

TEST_F(ObjectValuesTest, RefuseAnotherObject) {
    const std::string file = directory.write("made.lwo", objectFile(kBody));
    const Mesh made = readMesh(file, {});
    const MeshValues values = valuesOfPositions(made, {}, 1, weightAt);
    for (const std::string &other :
         {cube("FACE"), objectFile(pointsChunk(kSixPoints) + polygonsChunk("FACE", {{0, 1, 2}}))})
        EXPECT_EQ(errorOf([&] {
                      objectValues(made, values, readObject(other, file),
                                   {.file = file, .layer = {}, .mostBytes = kMuch, .transform = {}});
                  }),
                  file + ": its polygons are not those of the mesh that was read from it before; it may have been "
                         "changed meanwhile");
}

TEST_F(ObjectValuesTest, FitRealFiles) {
    const std::vector<std::filesystem::path> files = realFiles(".lwo");
    if (files.empty()) GTEST_SKIP() << "assimp-testmodels is not installed";
    std::size_t count = 0;
    for (const std::filesystem::path &file : files) {
        SCOPED_TRACE(file);
        const std::string bytes = readFile(file);
        if (bytes.size() < 12 || bytes.substr(8, 4) != "LWO2") continue;
        const std::string result = baked(bytes);
        count += expectValuesOfPoints(result, kRoundingError * size()) > 0 ? 1 : 0;
        // The reader of meshes has the map, too.
        const Mesh again = readMesh(directory.write("baked.lwo", result), {}, {}, 0);
        EXPECT_EQ(std::ranges::count(again.vertexMaps, "AO", &VertexMap::name), 1);
        EXPECT_EQ(again.polygonCount, mesh->polygonCount);
    }
    EXPECT_GT(count, 20U);
}

} // namespace
} // namespace velm::host::test
