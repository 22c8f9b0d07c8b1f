// The readers of PLY and STL files: their meshes, which have to equal those of the mesh library, and their errors.
#include "host/base/error.h"
#include "host/render/geometry/mesh_formats.h"
#include "tests/render/same_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <string>

namespace velm::host::test {
namespace {

const std::string kModels = "/usr/share/assimp/models/"; // of Debian's package assimp-testmodels

std::string bytesOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The bytes of a number in a file.
template <class Number>
std::string packed(Number number, std::endian order = std::endian::little) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    if (order != std::endian::native) std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

std::string packed(std::initializer_list<float> numbers, std::endian order = std::endian::little) {
    std::string bytes;
    for (const float number : numbers) bytes += packed(number, order);
    return bytes;
}

// ---- Comparison with the mesh library ----

class MeshReaders : public testing::TestWithParam<const char *> {};

TEST_P(MeshReaders, ReadWhatTheMeshLibraryReads) {
    const std::string file = kModels + GetParam(), bytes = bytesOf(file);
    const MeshFormat *format = meshFormatOf(file);
    ASSERT_TRUE(format);
    const bool isPly = std::string(format->name) == "PLY";
    const Transform turned(TransformDescription{.position = {1, 2, 3}, .rotation = {30, 40, 50}, .scale = {1, -2, 3}});
    for (const Transform &transform : {Transform(), turned}) {
        const auto own = isPly ? plainPlyMesh(bytes, file, transform) : plainStlMesh(bytes, file, transform);
        ASSERT_TRUE(own) << "it is left to the mesh library";
        expectSame(*own, readWithAssimp(file, *format, transform));
        EXPECT_TRUE(own->warnings.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(, MeshReaders,
                         testing::Values("PLY/Wuson.ply", "PLY/cube.ply", "PLY/cube_binary.ply", "PLY/cube_uv.ply",
                                         "PLY/float-color.ply", "STL/3DSMaxExport.STL", "STL/Spider_ascii.stl",
                                         "STL/Spider_binary.stl", "STL/Wuson.stl", "STL/sphereWithHole.stl",
                                         "STL/triangle.stl", "STL/triangle_with_empty_solid.stl",
                                         "STL/triangle_with_two_solids.stl"),
                         [](const auto &file) {
                             std::string name = file.param;
                             std::ranges::replace_if(
                                 name, [](char letter) { return !std::isalnum(letter); }, '_');
                             return name;
                         });

// ---- PLY ----

const std::string kName = "a.ply";

std::string refusalOf(const std::string &bytes) {
    try {
        const bool isPly = bytes.starts_with("ply");
        if (!(isPly ? plainPlyMesh(bytes, kName, Transform()) : plainStlMesh(bytes, kName, Transform())))
            return "it is left to the mesh library";
    } catch (const InputError &error) {
        EXPECT_EQ(error.location().file, kName);
        return error.message();
    }
    return "it was read";
}

// Two polygons on four points, with properties of all types, some of which the reader ignores.
std::string binaryPly(std::endian order) {
    std::string bytes =
        order == std::endian::little ? "ply\nformat binary_little_endian 1.0\n" : "ply\nformat binary_big_endian 1.0\n";
    bytes += "comment made for a test\nelement note 1\nproperty list ushort char text\nelement vertex 4\n"
             "property short id\nproperty float x\nproperty double y\nproperty float z\nproperty float nx\n"
             "property float ny\nproperty float nz\nproperty float s\nproperty float t\nelement face 2\n"
             "property uchar flags\nproperty list uint ushort vertex_index\nend_header\n";
    bytes += packed(std::uint16_t{3}, order) + "abc";
    for (int i = 0; i < 4; ++i) {
        const float x = i == 1 || i == 2 ? 1.0f : 0.0f, y = i >= 2 ? 1.0f : 0.0f;
        bytes += packed(static_cast<std::int16_t>(-i), order) + packed(x, order) +
                 packed(static_cast<double>(y), order) + packed({0.5f, 0, 0, 2, x, y}, order);
    }
    bytes += "\7" + packed(std::uint32_t{4}, order);
    for (const std::uint16_t corner : std::array<std::uint16_t, 4>{0, 1, 2, 3}) bytes += packed(corner, order);
    bytes += "\7" + packed(std::uint32_t{3}, order);
    for (const std::uint16_t corner : std::array<std::uint16_t, 3>{2, 1, 0}) bytes += packed(corner, order);
    return bytes;
}

TEST(PlyReader, ReadsBothOrdersOfBytes) {
    for (const std::endian order : {std::endian::little, std::endian::big}) {
        const auto mesh = plainPlyMesh(binaryPly(order), kName, Transform());
        ASSERT_TRUE(mesh);
        EXPECT_EQ(mesh->points.size(), 4u);
        EXPECT_EQ(mesh->polygonCount, 2u);
        EXPECT_EQ(mesh->polygonNumbers, (std::pmr::vector<std::uint32_t>{0, 0, 1}));
        for (std::size_t i = 0; i < 4; ++i) {
            const auto &[x, y, z] = mesh->points[i].position;
            EXPECT_EQ(z, -0.5f);
            EXPECT_EQ(mesh->normals[i], (std::array<float, 3>{0, 0, -1}));
            EXPECT_EQ(mesh->uvMaps.at(0).values[i], (std::array<float, 2>{x, y}));
        }
    }
}

TEST(PlyReader, RefusesFilesThatEndEarly) {
    const std::string whole = binaryPly(std::endian::little), header = whole.substr(0, whole.find("end_header"));
    EXPECT_EQ(refusalOf(whole), "it was read");
    for (std::size_t length = header.size() + 11; length < whole.size(); ++length)
        EXPECT_TRUE(refusalOf(whole.substr(0, length))
                        .starts_with("cannot read the mesh: it ends too early: of 7 elements after its header, "))
            << length;
    EXPECT_TRUE(refusalOf(whole.substr(0, whole.size() - 1)).ends_with(" 6 are there"));
}

std::string plyFile(const std::string &header, const std::string &body) {
    return "ply\n" + header + "end_header\n" + body;
}

// Four vertices, of which two are at the same point; the second one at (0, 1, 0) is blue.
TEST(PlyReader, ReadsColours) {
    const struct {
        const char *properties;
        std::array<const char *, 4> colours;
        std::uint32_t size;
    } kRows[] = {
        {"uchar", {"255 0 51", "0 51 255", "51 255 0", "0 0 255"}, 3},
        {"ushort", {"65535 0 13107", "0 13107 65535", "13107 65535 0", "0 0 65535"}, 3},
        {"int", {"255 0 51", "0 51 255", "51 255 0", "0 0 255"}, 3},
        {"double", {"1 0 0.2 0.5", "0 0.2 1 1", "0.2 1 0 0", "0 0 1 1"}, 4},
    };
    for (const auto &row : kRows) {
        SCOPED_TRACE(row.properties);
        std::string header =
            "format ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n";
        for (const char *name : {"red", "green", "blue"})
            header += fmt::format("property {} {}\n", row.properties, name);
        if (row.size == 4) header += fmt::format("property {} alpha\n", row.properties);
        header += "element face 2\nproperty list uchar int vertex_indices\n";
        const std::string body = fmt::format("0 0 0 {}\n1 0 0 {}\n0 1 0 {}\n0 1 0 {}\n3 0 1 2\n3 0 1 3\n",
                                             row.colours[0], row.colours[1], row.colours[2], row.colours[3]);
        const auto mesh = plainPlyMesh(plyFile(header, body), kName, Transform());
        ASSERT_TRUE(mesh);
        ASSERT_EQ(mesh->points.size(), 4U) << "vertices differ in their colours";
        ASSERT_EQ(mesh->vertexMaps.size(), 1U);
        const VertexMap &map = mesh->vertexMaps[0];
        EXPECT_EQ(map.name, "Color");
        ASSERT_EQ(map.size, row.size);
        const std::array<std::array<float, 3>, 4> kExpected = {{{1, 0, 0.2F}, {0, 0.2F, 1}, {0.2F, 1, 0}, {0, 0, 1}}};
        for (std::size_t vertex = 0; vertex < 4; ++vertex)
            EXPECT_TRUE(std::ranges::equal(map.valueOf(vertex).first(3), kExpected[vertex])) << vertex;
        EXPECT_EQ(map.valueOf(0).back(), row.size == 4 ? 0.5F : 0.2F);
        ASSERT_EQ(mesh->materialValues.size(), 1U) << "a mesh that is opened directly shows its colours";
        EXPECT_EQ(mesh->materialValues[0].colourMap, "Color");
    }
}

struct Refusal {
    const char *name, *header, *body, *message;
};

class PlyRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(PlyRefusals, SayWhatIsWrong) {
    EXPECT_EQ(refusalOf(plyFile(GetParam().header, GetParam().body)), GetParam().message);
}

#define PLACE "property float x\nproperty float y\nproperty float z\n"
#define VERTICES "format ascii 1.0\nelement vertex 3\n" PLACE
#define CORNERS "property list uchar int vertex_indices\n"
#define FACES "element face 1\n" CORNERS
#define POINTS "0 0 0\n1 0 0\n0 1 0\n"

INSTANTIATE_TEST_SUITE_P(
    , PlyRefusals,
    testing::Values(
        Refusal{"UnknownFormat", "format binary 1.0\n", "",
                "cannot read the mesh: line 2: \"binary\" is not a format of PLY files"},
        Refusal{"NoFormat", "element vertex 3\n", "", "cannot read the mesh: line 3: its header names no format"},
        Refusal{"UnknownType", "format ascii 1.0\nelement vertex 3\nproperty real x\n", "",
                "cannot read the mesh: line 4: \"real\" is not a type of PLY files"},
        Refusal{"LengthOfList", "format ascii 1.0\nelement face 1\nproperty list float int vertex_indices\n", "",
                "cannot read the mesh: line 4: the length of a list is not an integer"},
        Refusal{"NumberOfElements", "format ascii 1.0\nelement vertex many\n", "",
                "cannot read the mesh: line 3: the element \"vertex\" has the number \"many\""},
        Refusal{"LooseProperty", "format ascii 1.0\nproperty float x\n", "",
                "cannot read the mesh: line 3: a property without an element"},
        Refusal{"NamelessProperty", "format ascii 1.0\nelement vertex 1\nproperty float\n", "",
                "cannot read the mesh: line 4: a property without a name"},
        Refusal{"NoDepth", "format ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n" FACES,
                "0 0\n1 0\n0 1\n3 0 1 2\n", "cannot read the mesh: its vertices have no x, y and z"},
        Refusal{"NoCorners", VERTICES "element face 1\nproperty int id\n", POINTS "3\n",
                "cannot read the mesh: its faces have no list \"vertex_indices\""},
        Refusal{"MissingPoint", VERTICES FACES, POINTS "3 0 1 3\n",
                "a polygon of the mesh has a vertex that is not there"},
        Refusal{"NegativePoint", VERTICES FACES, POINTS "3 0 1 -1\n",
                "a polygon of the mesh has a vertex that is not there"},
        Refusal{"NegativeLength", VERTICES FACES, POINTS "-3 0 1 2\n",
                "cannot read the mesh: a list has a negative length"},
        Refusal{"NoNumber", VERTICES FACES, "0 0 0\n1 zero 0\n0 1 0\n3 0 1 2\n",
                "cannot read the mesh: line 11: \"zero\" is not the number expected"},
        Refusal{"ShortLine", VERTICES FACES, POINTS "3 0 1\n", "cannot read the mesh: line 13: a number is missing"},
        Refusal{"NoPolygons", VERTICES "element face 0\n" CORNERS, POINTS, "the mesh has no polygons"},
        Refusal{"ManyPoints", "format ascii 1.0\nelement vertex 1000000000000000\n" PLACE FACES, POINTS,
                "cannot read the mesh: it ends too early: of 1000000000000001 lines after its header, 3 are there"},
        Refusal{"Texture", "comment TextureFile a.png\n" VERTICES FACES, POINTS "3 0 1 2\n",
                "it is left to the mesh library"},
        Refusal{"Strips", VERTICES "element tristrips 1\nproperty list int int vertex_indices\n", POINTS "3 0 1 2\n",
                "it is left to the mesh library"}),
    [](const auto &refusal) { return std::string(refusal.param.name); });

TEST(PlyReader, MergesEqualVertices) {
    const auto mesh = plainPlyMesh(plyFile("format ascii 1.0\nelement vertex 6\n" PLACE "element face 2\n" CORNERS,
                                           POINTS "0 1 0\n1 0 -0.0\n1 1 0\n3 0 1 2\n3 3 4 5\n"),
                                   kName, Transform());
    ASSERT_TRUE(mesh);
    EXPECT_EQ(mesh->points.size(), 4u);
    EXPECT_TRUE(mesh->polygonNumbers.empty()) << "no numbers are stored if each triangle is a polygon";
}

TEST(PlyReader, TakesNumbersOfAnySizeAndWithASign) {
    const auto mesh =
        plainPlyMesh(plyFile(VERTICES FACES, "+1e0 1e-400 0\n0 1 1e-60\n0 0 0\n3 0 1 2\n"), kName, Transform());
    ASSERT_TRUE(mesh);
    EXPECT_EQ(mesh->points[0].position[0], 1);
    EXPECT_EQ(mesh->points[0].position[1], 0);
}

#undef PLACE
#undef VERTICES
#undef CORNERS
#undef FACES
#undef POINTS

// ---- STL ----

std::string facet(const std::string &lines) {
    return "facet normal 0 0 1\nouter loop\n" + lines + "endloop\nendfacet\n";
}

TEST(StlReader, RefusesBrokenText) {
    const std::string corners = "vertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n";
    const std::pair<std::string, const char *> cases[] = {
        {facet(corners), "it was read"},
        {facet("vertex 0 0 0\nvertex 1 0 0\n"),
         "cannot read the mesh: line 7: a facet with 2 vertices where three are expected"},
        {facet(corners + "vertex 1 1 1\n"), "cannot read the mesh: line 7: a vertex too many: a facet has three"},
        {corners, "cannot read the mesh: line 2: a vertex too many: a facet has three"},
        {facet("vertex 0 0\n"), "cannot read the mesh: line 4: a number is missing"},
        {facet("vertex 0 0 up\n"), "cannot read the mesh: line 4: \"up\" is not a number"},
        {"facet normal 0 0 1\n" + facet(corners), "cannot read the mesh: line 3: a facet begins within another"},
        {facet(corners) + "facet normal 0 0 1\n", "cannot read the mesh: line 9: the file ends within a facet"},
        {"", "it is left to the mesh library"},
        {facet(corners + "colour 1 0 0\n"), "it is left to the mesh library"}};
    for (const auto &[text, message] : cases) EXPECT_EQ(refusalOf("solid a facet\n" + text), message) << text;
}

std::string binaryStl(std::uint16_t attribute, const std::string &head = "a head") {
    std::string bytes = head;
    bytes.resize(80, ' ');
    return bytes + packed(std::uint32_t{1}) + packed({0, 0, 3, 0, 0, 0, 1, 0, 0, 0, 1, 0}) + packed(attribute);
}

TEST(StlReader, KeepsTheNormalsOfFacets) {
    const auto mesh = plainStlMesh(binaryStl(7), "a.stl", Transform());
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->triangles.size(), 1u);
    for (const auto &normal : mesh->normals) EXPECT_EQ(normal, (std::array<float, 3>{0, 0, -1}));
}

TEST(StlReader, LeavesColoursToTheMeshLibrary) {
    EXPECT_FALSE(plainStlMesh(binaryStl(0x8000), "a.stl", Transform()));
    EXPECT_FALSE(plainStlMesh(binaryStl(0, "COLOR=abcd"), "a.stl", Transform()));
}

} // namespace
} // namespace velm::host::test
