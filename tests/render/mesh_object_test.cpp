// Meshes of LightWave's object files.
#include "host/base/error.h"
#include "host/io/reader_process.h"
#include "host/render/geometry/bounds.h"
#include "host/render/geometry/mesh_formats.h"
#include "tests/object/object_bytes.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <map>

namespace velm::host::test {
namespace {

struct ObjectMeshTest : testing::Test {
    Mesh read(const std::string &bytes, const TransformDescription &place = {}) {
        writeText(directory / "a.lwo", bytes);
        return readMesh(directory / "a.lwo", Transform(place));
    }
    const TemporaryDirectory directory;
};

Vec3 frontOf(const Mesh &mesh, std::uint32_t triangle) {
    return normalised(cross(mesh.corner(triangle, 1) - mesh.corner(triangle, 0),
                            mesh.corner(triangle, 2) - mesh.corner(triangle, 0)));
}

double areaOf(const Mesh &mesh) {
    double area = 0;
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i)
        area += length(cross(mesh.corner(i, 1) - mesh.corner(i, 0), mesh.corner(i, 2) - mesh.corner(i, 0))) / 2;
    return area;
}

std::vector<std::string> warningsOf(const Mesh &mesh) {
    std::vector<std::string> messages;
    for (const MeshWarning &warning : mesh.warnings) messages.push_back(warning.message);
    return messages;
}

const std::string kPoints = pointsChunk(kSixPoints), kPolygons = polygonsChunk("FACE", kSquareAndTriangle);

TEST_F(ObjectMeshTest, AxesAreThoseOfTheFile) {
    const Mesh mesh = read(objectFile(kPoints + kPolygons));
    ASSERT_EQ(mesh.triangles.size(), 3U);
    EXPECT_EQ(mesh.polygonCount, 2U);
    EXPECT_EQ(mesh.polygonNumbers, (std::pmr::vector<std::uint32_t>{0, 0, 1}));
    for (std::uint32_t i = 0; i < 3; ++i) expectNear(frontOf(mesh, i), {0, 0, -1}, 1e-6);
    const Bounds bounds = boundsByMaterial(mesh)[0];
    EXPECT_EQ(bounds.sides[0][0], 0);
    EXPECT_EQ(bounds.sides[0][1], 2);
    const Mesh behind = read(objectFile(pointsChunk({0, 0, 5, 0, 1, 5, 1, 1, 5}) + polygonsChunk("FACE", {{0, 1, 2}})));
    EXPECT_EQ(boundsByMaterial(behind)[0].sides[2][0], 5) << "not mirrored";
}

TEST_F(ObjectMeshTest, TransformsKeepTheFront) {
    for (const Double3 &scale : {Double3{1, 1, 1}, Double3{-1, 1, 1}, Double3{1, -2, -3}, Double3{1, 1, -1}}) {
        const Mesh mesh = read(objectFile(kPoints + kPolygons), {.position = {5, 6, 7}, .scale = scale});
        for (std::uint32_t i = 0; i < 3; ++i) expectNear(frontOf(mesh, i), {0, 0, scale[2] < 0 ? 1.0 : -1.0}, 1e-6);
        EXPECT_NEAR(boundsByMaterial(mesh)[0].sides[2][0], 7, 1e-6);
    }
}

// The same cube, without the file's surface, as the mesh library reads it.
TEST_F(ObjectMeshTest, ACubeIsAsTheMeshLibraryReadsIt) {
    const std::string file = "/usr/share/assimp/models/LWS/simple_cube.lwo"; // of Debian's package assimp-testmodels
    const MeshFormat *format = meshFormatOf(file);
    ASSERT_STREQ(format->name, "LWO");
    const Mesh own = readMesh(file, Transform()), theirs = readWithAssimp(file, *format, Transform());
    ASSERT_EQ(own.triangles.size(), 12U);
    ASSERT_EQ(theirs.triangles.size(), 12U);
    EXPECT_EQ(own.materials, theirs.materials);
    // Each side by its direction and its distance from the origin.
    const auto sidesOf = [](const Mesh &mesh) {
        std::map<std::array<long, 3>, double> sides;
        for (std::uint32_t i = 0; i < 12; ++i) {
            const Vec3 front = frontOf(mesh, i);
            sides[{std::lround(front.x), std::lround(front.y), std::lround(front.z)}] += dot(front, mesh.corner(i, 0));
        }
        return sides;
    };
    const auto expected = sidesOf(theirs), found = sidesOf(own);
    EXPECT_EQ(found.size(), 6U);
    for (const auto &[front, distance] : expected) EXPECT_NEAR(found.at(front), distance, 1e-5);
}

TEST_F(ObjectMeshTest, SurfacesAreMaterials) {
    const Mesh mesh = read(objectFile(tagsChunk({"Unused", "Part", "Blue", "Red"}) + kPoints + kPolygons +
                                      polygonTagsChunk("SURF", {{0, 3}, {1, 2}}) + polygonTagsChunk("PART", {{0, 1}})));
    EXPECT_EQ(mesh.materials, (std::vector<std::string>{"Red", "Blue"}));
    EXPECT_EQ(mesh.materialNumbers, (std::pmr::vector<std::uint16_t>{0, 0, 1}));
    EXPECT_EQ(read(objectFile(kPoints + kPolygons)).materials, (std::vector<std::string>{"Default"}));
}

TEST_F(ObjectMeshTest, OldObjectsAreRead) {
    const Mesh mesh =
        read(oldObjectFile(chunk("SRFS", cString("Red")) + kPoints + chunk("POLS", words({4, 0, 1, 2, 3, 1}))));
    EXPECT_EQ(mesh.triangles.size(), 2U);
    EXPECT_EQ(mesh.materials, (std::vector<std::string>{"Red"}));
    expectNear(frontOf(mesh, 0), {0, 0, -1}, 1e-6);
}

TEST_F(ObjectMeshTest, VisibleLayersAreDrawnWhereTheyAre) {
    const std::string moved = chunk("LAYR", words({1, 0}) + reals({10, 0, 0}) + cString("Moved") + words({0}));
    const Mesh mesh = read(objectFile(layerChunk(0, 0, "") + kPoints + kPolygons + moved +
                                      pointsChunk({0, 5, 0, 0, 6, 0, 1, 5, 0}) + polygonsChunk("FACE", {{0, 1, 2}})));
    EXPECT_EQ(mesh.polygonCount, 3U);
    const Bounds bounds = boundsByMaterial(mesh)[0];
    EXPECT_EQ(bounds.sides[0][1], 2) << "the pivot moves no points";
    EXPECT_EQ(bounds.sides[1][1], 6);
    EXPECT_TRUE(mesh.warnings.empty());
}

TEST_F(ObjectMeshTest, HiddenLayersAreLeftOut) {
    const std::string shown = layerChunk(0, 0, "") + kPoints + kPolygons;
    const std::string map = mapChunk("TXUV", 2, "Hidden", {{0, {0, 0}}});
    const std::string hidden = layerChunk(3, 1, "Wheels") + kPoints + map + kPolygons;
    const Mesh mesh =
        read(objectFile(hidden + shown + layerChunk(4, 1, "") + kPoints + kPolygons + layerChunk(5, 1, "")));
    EXPECT_EQ(mesh.polygonCount, 2U);
    EXPECT_TRUE(mesh.uvMaps.empty());
    EXPECT_EQ(warningsOf(mesh),
              (std::vector<std::string>{"2 layers are hidden and not drawn (the first: layer 3 \"Wheels\")"}));
    EXPECT_EQ(errorOf([&] { read(objectFile(hidden)); }),
              (directory / "a.lwo") + ": the mesh has no polygons but in hidden layers");
}

TEST_F(ObjectMeshTest, OneLayerCanBeDrawnByItself) {
    writeText(directory / "a.lwo",
              objectFile(layerChunk(0, 0, "") + kPoints + kPolygons + layerChunk(3, 1, "Wheels") +
                         pointsChunk({0, 5, 0, 0, 6, 0, 1, 5, 0}) + polygonsChunk("FACE", {{0, 1, 2}})));
    const auto layer = [this](int number) { return readMesh(directory / "a.lwo", {}, number); };
    EXPECT_EQ(layer(0).polygonCount, 2U);
    EXPECT_EQ(layer(3).polygonCount, 1U) << "although it is hidden";
    EXPECT_TRUE(layer(0).warnings.empty()) << "nothing about the hidden layer";
    EXPECT_EQ(errorOf([&] { layer(1); }), (directory / "a.lwo") + ": the object has no layer 1");
    writeText(directory / "a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_EQ(errorOf([&] { readMesh(directory / "a.obj", {}, 0); }),
              (directory / "a.obj") + ": a file of this format has no layers");
}

TEST_F(ObjectMeshTest, WarnsOfWhatIsNotDrawn) {
    const Mesh mesh =
        read(objectFile(tagsChunk({"A"}) + kPoints + mapChunk("WGHT", 1, "Bend", {{0, {1}}}) +
                        mapChunk("MORF", 3, "Smile", {{0, {1, 1, 1}}}) + mapChunk("PICK", 0, "Set", {{0, {}}}) +
                        mapChunk("WGHT", 1, "Empty", {}) + kPolygons + polygonTagsChunk("SMGP", {{1, 0}}) +
                        cornerMapChunk("MORF", 3, "Smile", {{0, 0, {1, 1, 1}}}) +
                        mapChunk("NORM", 3, "Up", {{0, {0, 1, 0}}}) + polygonsChunk("FACE", {{0}, {0, 1}, {}}) +
                        polygonsChunk("PTCH", {{0, 1, 2, 3}}) + polygonsChunk("CURV", {{0, 1, 2}})));
    EXPECT_EQ(mesh.polygonCount, 18U) << "the cage is 16 of them";
    EXPECT_EQ(
        warningsOf(mesh),
        (std::vector<std::string>{
            "3 polygons have fewer than three points and are left out (the first: polygon 2 of layer 0)",
            "a polygon is of another type than FACE, PTCH and SUBD and is left out (CURV, polygon 6 of layer 0)",
            "the smoothing group of a polygon is ignored (polygon 1 of layer 0)",
            "2 vertex maps are not used: only UV, weight and colour maps are (the first: MORF \"Smile\", layer 0)"}));
    EXPECT_EQ(mesh.warnings[0].brief, "polygons of one or two points");
}

TEST_F(ObjectMeshTest, SubdivisionSurfacesHaveALevel) {
    writeText(directory / "a.lwo", objectFile(kPoints + polygonsChunk("PTCH", kSquareAndTriangle)));
    const auto polygons = [this](int level) { return readMesh(directory / "a.lwo", {}, {}, level).polygonCount; };
    EXPECT_EQ(polygons(0), 2U);
    EXPECT_EQ(polygons(3), 4U * 16 + 3 * 16);
    EXPECT_EQ(readMesh(directory / "a.lwo", {}).polygonCount, polygons(2));
    const Mesh mesh = read(objectFile(kPoints + polygonsChunk("SUBD", kSquareAndTriangle)), {.scale = {-1, 1, 1}});
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) expectNear(frontOf(mesh, i), {0, 0, -1}, 1e-5);
    EXPECT_EQ(mesh.points.size(), 39U) << "those of a disc of 28 polygons with 20 edges around";
}

TEST_F(ObjectMeshTest, SubdivisionSurfacesTakeNoMoreMemoryThanAllowed) {
    writeText(directory / "a.lwo", objectFile(kPoints + polygonsChunk("PTCH", kSquareAndTriangle)));
    const ReadLimits before = std::exchange(readLimits(), {.mebibytes = 32});
    const std::string error = errorOf([&] { readMesh(directory / "a.lwo", {}, {}, 8); });
    readLimits() = before;
    EXPECT_EQ(error, (directory / "a.lwo") +
                         ": the object's subdivision surfaces have 114688 polygons at level 8, which take about 54 MiB "
                         "of memory; 32 MiB are allowed. Choose a lower level (see --subdivision)");
}

// An L, whose corner at (1, 1) is concave: any fan around another corner would leave it.
TEST_F(ObjectMeshTest, ConcavePolygonsKeepTheirArea) {
    const Mesh mesh = read(objectFile(pointsChunk({0, 0, 0, 0, 2, 0, 1, 2, 0, 1, 1, 0, 2, 1, 0, 2, 0, 0}) +
                                      polygonsChunk("FACE", {{0, 1, 2, 3, 4, 5}})));
    EXPECT_EQ(mesh.triangles.size(), 4U);
    EXPECT_NEAR(areaOf(mesh), 3, 1e-6);
    for (std::uint32_t i = 0; i < 4; ++i) expectNear(frontOf(mesh, i), {0, 0, -1}, 1e-6);
}

TEST_F(ObjectMeshTest, PolygonsMayBeThereTwiceWithBothFronts) {
    const Mesh mesh = read(objectFile(kPoints + polygonsChunk("FACE", {{0, 1, 2}, {2, 1, 0}})));
    ASSERT_EQ(mesh.triangles.size(), 2U);
    expectNear(frontOf(mesh, 0), {0, 0, -1}, 1e-6);
    expectNear(frontOf(mesh, 1), {0, 0, 1}, 1e-6);
}

TEST_F(ObjectMeshTest, PolygonsWithoutAnAreaAreDropped) {
    const Mesh mesh = read(objectFile(kPoints + polygonsChunk("FACE", {{0, 1, 1}, {0, 3, 4}, {0, 1, 2}})));
    EXPECT_EQ(mesh.triangles.size(), 1U);
    EXPECT_EQ(errorOf([&] {
                  read(objectFile(kPoints + polygonsChunk("FACE", {{0, 3, 4}})));
              }),
              (directory / "a.lwo") + ": the mesh has no polygons");
}

TEST_F(ObjectMeshTest, DamageIsToldWithTheByte) {
    EXPECT_EQ(errorOf([&] {
                  read(objectFile(polygonsChunk("FACE", {{0, 1, 2}})));
              }),
              (directory / "a.lwo") + ": byte 26: the chunk POLS: polygon 0 has the point 0, and there are 0 points");
}

// ---- UV maps ----

// The UV coordinates of a map at the corners of a triangle, by position.
std::map<std::array<float, 3>, std::array<float, 2>> uvsOf(const Mesh &mesh, std::size_t map, std::uint32_t polygon) {
    std::map<std::array<float, 3>, std::array<float, 2>> found;
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        if (mesh.polygonNumber(i) != polygon) continue;
        for (const std::uint32_t corner : mesh.triangles[i].corners) {
            const float *p = mesh.points[corner].position;
            found[{p[0], p[1], p[2]}] = mesh.uvMaps[map].values[corner];
        }
    }
    return found;
}

using Uvs = std::map<std::array<float, 3>, std::array<float, 2>>;

TEST_F(ObjectMeshTest, ASeamSplitsItsPointsOnly) {
    // The square and the triangle share points 2 and 3; the triangle has values of its own at point 2.
    const Mesh mesh = read(objectFile(
        kPoints + mapChunk("TXUV", 2, "Map", {{0, {0, 0}}, {1, {0, 1}}, {2, {0.5F, 1}}, {3, {0.5F, 0}}, {5, {1, 1}}}) +
        kPolygons + cornerMapChunk("TXUV", 2, "Map", {{2, 1, {0.75F, 0.25F}}, {3, 1, {0.5F, 0}}})));
    ASSERT_EQ(mesh.uvMaps.size(), 1U);
    EXPECT_EQ(mesh.uvMaps[0].name, "Map");
    EXPECT_EQ(mesh.points.size(), 6U) << "five points are used, one of them with two values";
    EXPECT_EQ(uvsOf(mesh, 0, 0),
              (Uvs{{{0, 0, 0}, {0, 0}}, {{0, 1, 0}, {0, 1}}, {{1, 1, 0}, {0.5F, 1}}, {{1, 0, 0}, {0.5F, 0}}}));
    EXPECT_EQ(uvsOf(mesh, 0, 1), (Uvs{{{1, 0, 0}, {0.5F, 0}}, {{1, 1, 0}, {0.75F, 0.25F}}, {{2, 1, 0}, {1, 1}}}));
}

TEST_F(ObjectMeshTest, MapsOfCornersAlone) {
    std::vector<CornerMapValue> values;
    for (std::size_t i = 0; i < 4; ++i) values.push_back({i, 0, {static_cast<float>(i), 0}});
    // In any order; the last value of a corner counts.
    values.insert(values.begin(), {{3, 1, {8, 8}}, {2, 1, {7, 7}}, {5, 1, {9, 9}}, {0, 0, {6, 6}}});
    const Mesh mesh = read(objectFile(kPoints + kPolygons + cornerMapChunk("TXUV", 2, "Map", values)));
    EXPECT_EQ(uvsOf(mesh, 0, 0),
              (Uvs{{{0, 0, 0}, {0, 0}}, {{0, 1, 0}, {1, 0}}, {{1, 1, 0}, {2, 0}}, {{1, 0, 0}, {3, 0}}}));
    EXPECT_EQ(uvsOf(mesh, 0, 1), (Uvs{{{1, 0, 0}, {8, 8}}, {{1, 1, 0}, {7, 7}}, {{2, 1, 0}, {9, 9}}}));
    EXPECT_EQ(mesh.points.size(), 7U);
}

TEST_F(ObjectMeshTest, EqualValuesOfCornersShareAVertex) {
    const std::vector<std::vector<std::size_t>> fan{{0, 1, 2}, {0, 2, 3}, {0, 3, 5}};
    const std::vector<CornerMapValue> values{{0, 1, {0.5F, 0.5F}}, {0, 2, {0.5F, 0.5F}}};
    const Mesh mesh = read(objectFile(kPoints + mapChunk("TXUV", 2, "Map", {{0, {0, 0}}}) + polygonsChunk("FACE", fan) +
                                      cornerMapChunk("TXUV", 2, "Map", values)));
    EXPECT_EQ(mesh.points.size(), 6U);
}

TEST_F(ObjectMeshTest, SeveralMapsAndLayersHaveNoValuesOfOthers) {
    const std::string second = layerChunk(1, 0, "") + pointsChunk({0, 3, 0, 0, 4, 0, 1, 3, 0}) +
                               mapChunk("TXUV", 2, "B", {{0, {3, 4}}}) + polygonsChunk("FACE", {{0, 1, 2}});
    const Mesh mesh = read(objectFile(kPoints + mapChunk("TXUV", 2, "A", {{0, {1, 2}}}) +
                                      mapChunk("TXUV", 3, "Odd", {{0, {1, 2, 3}}}) + kPolygons + second));
    ASSERT_EQ(mesh.uvMaps.size(), 2U) << "a UV map has two numbers for each point";
    EXPECT_EQ(mesh.uvMaps[0].name, "A");
    EXPECT_EQ(uvsOf(mesh, 0, 0).at({0, 0, 0}), (std::array<float, 2>{1, 2}));
    EXPECT_TRUE(std::isnan(uvsOf(mesh, 0, 0).at({0, 1, 0})[0]));
    EXPECT_TRUE(std::isnan(uvsOf(mesh, 1, 0).at({0, 0, 0})[0]));
    EXPECT_EQ(uvsOf(mesh, 1, 2).at({0, 3, 0}), (std::array<float, 2>{3, 4}));
    EXPECT_TRUE(std::isnan(uvsOf(mesh, 0, 2).at({0, 3, 0})[0]));
}

// ---- Weights and colours ----

// The values of a map at the corners of a polygon, by position.
std::map<std::array<float, 3>, std::vector<float>> valuesOf(const Mesh &mesh, std::size_t map, std::uint32_t polygon) {
    std::map<std::array<float, 3>, std::vector<float>> found;
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        if (mesh.polygonNumber(i) != polygon) continue;
        for (const std::uint32_t corner : mesh.triangles[i].corners) {
            const float *p = mesh.points[corner].position;
            const auto value = mesh.vertexMaps.at(map).valueOf(corner);
            found[{p[0], p[1], p[2]}] = {value.begin(), value.end()};
        }
    }
    return found;
}

using Values = std::map<std::array<float, 3>, std::vector<float>>;

TEST_F(ObjectMeshTest, WeightsAndColoursAreKeptByName) {
    const Mesh mesh = read(objectFile(kPoints + mapChunk("WGHT", 1, "Bend", {{0, {-0.5F}}, {1, {0.25F}}}) +
                                      mapChunk("TXUV", 2, "Map", {{0, {0.5F, 0.75F}}}) +
                                      mapChunk("RGB ", 3, "Paint", {{2, {0, 0.5F, 2}}}) +
                                      mapChunk("RGBA", 4, "Paint", {{2, {0, 0, 0, 0.5F}}}) + kPolygons +
                                      cornerMapChunk("WGHT", 1, "Bend", {{2, 1, {0.75F}}}) +
                                      cornerMapChunk("RGB ", 3, "Paint", {{2, 1, {1, 0, 0}}})));
    ASSERT_EQ(mesh.uvMaps.size(), 1U);
    ASSERT_EQ(mesh.vertexMaps.size(), 3U);
    EXPECT_EQ(mesh.vertexMaps[0].name, "Bend");
    EXPECT_TRUE(mesh.vertexMaps[0].isWeight());
    EXPECT_EQ(mesh.vertexMaps[1].name, "Paint");
    EXPECT_EQ(mesh.vertexMaps[1].size, 3U);
    EXPECT_EQ(mesh.vertexMaps[2].size, 4U);
    EXPECT_EQ(mesh.points.size(), 6U) << "the polygons differ at one of their common points";
    EXPECT_EQ(valuesOf(mesh, 0, 0),
              (Values{{{0, 0, 0}, {-0.5F}}, {{0, 1, 0}, {0.25F}}, {{1, 1, 0}, {0}}, {{1, 0, 0}, {0}}}));
    EXPECT_EQ(valuesOf(mesh, 0, 1), (Values{{{1, 0, 0}, {0}}, {{1, 1, 0}, {0.75F}}, {{2, 1, 0}, {0}}}));
    EXPECT_EQ(
        valuesOf(mesh, 1, 0),
        (Values{{{0, 0, 0}, {1, 1, 1}}, {{0, 1, 0}, {1, 1, 1}}, {{1, 1, 0}, {0, 0.5F, 2}}, {{1, 0, 0}, {1, 1, 1}}}));
    EXPECT_EQ(valuesOf(mesh, 1, 1).at({1, 1, 0}), (std::vector<float>{1, 0, 0}));
    EXPECT_EQ(valuesOf(mesh, 2, 1).at({1, 1, 0}), (std::vector<float>{0, 0, 0, 0.5F}));
    EXPECT_EQ(uvsOf(mesh, 0, 0).at({0, 0, 0}), (std::array<float, 2>{0.5F, 0.75F}));
    EXPECT_TRUE(mesh.warnings.empty());
}

TEST_F(ObjectMeshTest, WeightsOfSubdivisionSurfacesAreInterpolated) {
    writeText(directory / "a.lwo",
              objectFile(kPoints + mapChunk("WGHT", 1, "Bend", {{0, {0}}, {1, {0}}, {2, {1}}, {3, {1}}}) +
                         polygonsChunk("PTCH", {{0, 1, 2, 3}})));
    const Mesh mesh = readMesh(directory / "a.lwo", {}, {}, 1);
    ASSERT_EQ(mesh.vertexMaps.size(), 1U);
    std::vector<float> weights(mesh.vertexMaps[0].values.begin(), mesh.vertexMaps[0].values.end());
    std::ranges::sort(weights);
    EXPECT_EQ(weights, (std::vector<float>{0, 0, 0, 0.5F, 0.5F, 0.5F, 1, 1, 1}));
}

// ---- Smoothing ----

// Two triangles that make a roof with a ridge from (0, 1, 0) to (1, 1, 0).
const std::vector<float> kRoof = {0, 1, 0, 1, 1, 0, 0, 0, -1, 1, 0, 1};

// Whether the normals of the two sides agree on the ridge.
bool isSmooth(Mesh mesh) {
    smoothNormals(mesh, {180});
    std::map<std::array<float, 3>, std::vector<std::array<float, 3>>> normals;
    for (const HostPolygon &triangle : mesh.triangles)
        for (const std::uint32_t corner : triangle.corners) {
            const float *p = mesh.points[corner].position;
            normals[{p[0], p[1], p[2]}].push_back(mesh.normals[corner]);
        }
    const auto &ridge = normals.at({0, 1, 0});
    EXPECT_EQ(ridge.size(), 2U);
    return ridge[0] == ridge[1];
}

TEST_F(ObjectMeshTest, SmoothingGoesAcrossCommonPoints) {
    const std::string faces = polygonsChunk("FACE", {{0, 1, 2}, {1, 0, 3}});
    EXPECT_TRUE(isSmooth(read(objectFile(pointsChunk(kRoof) + faces))));
    // Also where their UV coordinates differ.
    const std::string seam =
        mapChunk("TXUV", 2, "M", {{0, {0, 0}}}) + faces + cornerMapChunk("TXUV", 2, "M", {{0, 1, {1, 1}}});
    const Mesh mesh = read(objectFile(pointsChunk(kRoof) + seam));
    EXPECT_EQ(mesh.points.size(), 5U);
    EXPECT_TRUE(isSmooth(mesh));
}

// The limit surface of a cube's cage has the cube's symmetry. So its normals at the corners are diagonal, also between
// different surfaces.
TEST_F(ObjectMeshTest, SubdivisionSurfacesHaveTheNormalsOfTheirLimit) {
    std::vector<float> points;
    for (int i = 0; i < 8; ++i)
        for (int axis = 0; axis < 3; ++axis) points.push_back((i >> axis & 1) != 0 ? 1.0F : -1.0F);
    const std::string cube =
        tagsChunk({"Red", "Blue"}) + pointsChunk(points) + mapChunk("TXUV", 2, "M", {{0, {0, 0}}}) +
        polygonsChunk("PTCH", {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}) +
        polygonTagsChunk("SURF", {{0, 0}, {1, 0}, {2, 0}, {3, 1}, {4, 1}, {5, 1}});
    for (const Double3 &scale : {Double3{1, 1, 1}, Double3{-1, 1, 1}}) {
        Mesh mesh = read(objectFile(cube), {.scale = scale});
        smoothNormals(mesh, {30, 30});
        std::size_t corners = 0;
        for (std::size_t i = 0; i < mesh.points.size(); ++i) {
            const float *p = mesh.points[i].position;
            const Vec3 point{p[0], p[1], p[2]}, normal{mesh.normals[i][0], mesh.normals[i][1], mesh.normals[i][2]};
            EXPECT_GT(dot(point, normal), 0);
            if (length(point) < std::sqrt(0.75) - 1e-5) continue; // the corners are at (1/2, 1/2, 1/2)
            if (std::abs(point.x) > 0.5 + 1e-5 || std::abs(point.y) > 0.5 + 1e-5 || std::abs(point.z) > 0.5 + 1e-5)
                continue;
            expectNear(normal, normalised(point), 1e-5);
            ++corners;
        }
        EXPECT_EQ(corners, 8U) << "none is split";
    }
}

TEST_F(ObjectMeshTest, SmoothingStopsBetweenDifferentPointsAtOnePosition) {
    std::vector<float> points = kRoof;
    points.insert(points.end(), {0, 1, 0, 1, 1, 0});
    const std::string faces = polygonsChunk("FACE", {{0, 1, 2}, {5, 4, 3}});
    EXPECT_FALSE(isSmooth(read(objectFile(pointsChunk(points) + faces))));
    const std::string map = mapChunk("TXUV", 2, "M", {{0, {0, 0}}});
    EXPECT_FALSE(isSmooth(read(objectFile(pointsChunk(points) + map + faces))));
}

} // namespace
} // namespace velm::host::test
