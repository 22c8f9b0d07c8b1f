// Meshes from files: axes, polygons, materials, maps and errors.
#include "host/base/error.h"
#include "host/render/geometry/mesh.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <fstream>
#include <sys/stat.h>

namespace velm::host::test {
namespace {

std::vector<Vec3> cornersOf(const Mesh &mesh, std::uint32_t triangle) {
    return {mesh.corner(triangle, 0), mesh.corner(triangle, 1), mesh.corner(triangle, 2)};
}

Vec3 frontOf(const Mesh &mesh, std::uint32_t triangle) {
    const auto corners = cornersOf(mesh, triangle);
    return normalised(cross(corners[1] - corners[0], corners[2] - corners[0]));
}

struct MeshFileTest : testing::Test {
    Mesh read(const std::string &name, const std::string &text, const TransformDescription &place = {}) {
        writeText(directory / name, text);
        return readMesh(directory / name, Transform(place));
    }
    const TemporaryDirectory directory;
};

// Counter-clockwise from above in right-handed axes, so it faces up in both.
constexpr const char *kUpObj = "v 0 0 0\nv 1 0 0\nv 1 0 -2\nf 1 2 3\n";

TEST_F(MeshFileTest, RightHandedFilesAreMirroredInZ) {
    const Mesh mesh = read("a.obj", kUpObj);
    ASSERT_EQ(mesh.triangles.size(), 1u);
    expectNear(frontOf(mesh, 0), {0, 1, 0}, 1e-6);
    const auto corners = cornersOf(mesh, 0);
    const auto has = [&](const Vec3 &point) {
        return std::any_of(corners.begin(), corners.end(), [&](const Vec3 &c) { return length(c - point) < 1e-6; });
    };
    EXPECT_TRUE(has({0, 0, 0}) && has({1, 0, 0}) && has({1, 0, 2}));
}

TEST_F(MeshFileTest, TransformsKeepTheFront) {
    for (const Double3 &scale : {Double3{1, 1, 1}, Double3{-1, 1, 1}, Double3{1, 1, -3}, Double3{-2, -1, -1}}) {
        const Mesh mesh = read("a.obj", kUpObj, {.position = {5, 6, 7}, .scale = scale});
        expectNear(frontOf(mesh, 0), {0, scale[1] < 0 ? -1.0 : 1.0, 0}, 1e-6);
        expectNear(mesh.corner(0, 0), {5, 6, 7}, 1e-6);
    }
}

TEST_F(MeshFileTest, PlyAndStlComeOutLikeObj) {
    const Mesh ply = read("a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                                   "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                                   "end_header\n0 0 0\n1 0 0\n1 0 -2\n3 0 1 2\n");
    expectNear(frontOf(ply, 0), {0, 1, 0}, 1e-6);
    const Mesh stl = read("a.stl", "solid a\nfacet normal 0 1 0\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                                   "vertex 1 0 -2\nendloop\nendfacet\nendsolid a\n");
    expectNear(frontOf(stl, 0), {0, 1, 0}, 1e-6);
}

TEST_F(MeshFileTest, PolygonsKeepTheirNumbers) {
    // A pentagon, a triangle without area, a quadrangle, a line, a triangle.
    const Mesh mesh = read("a.obj", "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 1 3 0\nv 0 2 0\nv 5 0 0\nv 6 0 0\nv 6 1 0\nv 5 1 0\n"
                                    "f 1 2 3 4 5\nf 1 1 2\nf 6 7 8 9\nl 1 2\nf 1 2 3\n");
    EXPECT_EQ(mesh.triangles.size(), 6u);
    EXPECT_EQ(mesh.polygonNumbers, (std::pmr::vector<std::uint32_t>{0, 0, 0, 2, 2, 3}));
    double area = 0;
    for (std::uint32_t i = 0; i < 6; ++i) {
        const auto corners = cornersOf(mesh, i);
        area += length(cross(corners[1] - corners[0], corners[2] - corners[0])) / 2;
    }
    EXPECT_NEAR(area, 5 + 1 + 2, 1e-5);
}

TEST_F(MeshFileTest, EqualVerticesAreKeptOnce) {
    // Two triangles that share an edge; the file repeats every vertex.
    const Mesh mesh = read("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\nf 4 5 6\n");
    EXPECT_EQ(mesh.points.size(), 4u);
    EXPECT_TRUE(mesh.polygonNumbers.empty()) << "no numbers where each triangle is a polygon";
}

TEST_F(MeshFileTest, MaterialsThatAreUsed) {
    writeText(directory / "a.mtl", "newmtl wood\nnewmtl steel\nnewmtl unused\n");
    const Mesh mesh = read("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\n"
                                    "usemtl steel\nf 1 2 3\nusemtl wood\nf 1 2 4\nusemtl steel\nf 2 3 4\n");
    std::vector<std::string> names = mesh.materials;
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"steel", "wood"}));
    std::size_t steel = 0;
    for (std::uint32_t i = 0; i < 3; ++i) steel += mesh.materials[mesh.materialNumber(i)] == "steel";
    EXPECT_EQ(steel, 2u);
}

TEST_F(MeshFileTest, MapsGoUp) {
    const Mesh mesh = read("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0.25 0.125\nvt 0.5 0.75\nvt 1 1\nf 1/1 2/2 3/3\n");
    ASSERT_EQ(mesh.uvMaps.size(), 1u);
    EXPECT_EQ(mesh.uvMaps[0].name, "UV");
    for (std::size_t i = 0; i < 3; ++i) {
        const float *p = mesh.points[i].position;
        const auto &uv = mesh.uvMaps[0].values[i];
        const std::array<float, 2> expected = p[0] == 1   ? std::array<float, 2>{0.5f, 0.75f}
                                              : p[1] == 1 ? std::array<float, 2>{1, 1}
                                                          : std::array<float, 2>{0.25f, 0.125f};
        EXPECT_EQ(uv, expected);
    }
}

TEST_F(MeshFileTest, TheFilesNormalsAreKept) {
    const Mesh mesh =
        read("a.obj", "v 0 0 0\nv 1 0 0\nv 1 0 -2\nvn 0 0.6 0.8\nf 1//1 2//1 3//1\n", {.scale = {1, 1, 2}});
    ASSERT_EQ(mesh.normals.size(), 3u);
    const Vec3 expected = normalised({0, 0.6, -0.4}); // mirrored, then by the inverse of the scale
    for (const auto &n : mesh.normals) expectNear({n[0], n[1], n[2]}, expected, 1e-6);
}

TEST_F(MeshFileTest, PartsWithTheirOwnPlacesAreJoined) {
    // Two nodes with the same triangle, one moved, one turned over by a mirroring.
    const std::string buffer = "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"; // (0,0,0) (1,0,0) (0,1,0)
    const Mesh mesh = read("a.gltf", R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1]}],
        "nodes":[{"mesh":0,"translation":[10,0,0]},{"mesh":0,"scale":[1,1,-1],"translation":[0,0,-4]}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}],
        "bufferViews":[{"buffer":0,"byteLength":36}],
        "buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,)" +
                                         buffer + R"("}]})");
    ASSERT_EQ(mesh.triangles.size(), 2u);
    expectNear(frontOf(mesh, 0), {0, 0, -1}, 1e-6, "towards +Z in the file");
    EXPECT_NEAR(mesh.corner(0, 0).x, 10, 1e-6);
    expectNear(frontOf(mesh, 1), {0, 0, 1}, 1e-6, "mirrored to -Z there");
    EXPECT_NEAR(mesh.corner(1, 0).z, 4, 1e-6);
}

TEST_F(MeshFileTest, ErrorsNameTheFile) {
    writeText(directory / "empty.obj", "");
    writeText(directory / "broken.ply", "ply\nformat nonsense\n");
    writeText(directory / "points.obj", "v 0 0 0\nv 1 0 0\n");
    writeText(directory / "flat.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n");
    writeText(directory / "unknown.xyz", "what is this");
    for (const char *name : {"missing.obj", "empty.obj", "broken.ply", "points.obj", "flat.obj", "unknown.xyz", ""}) {
        try {
            readMesh(directory / name, Transform());
            ADD_FAILURE() << name << " was read";
        } catch (const InputError &error) {
            EXPECT_EQ(std::string(error.what()).rfind(directory / name, 0), 0u) << error.what();
        }
    }
}

// A header that does not end, whatever follows it.
TEST_F(MeshFileTest, HeadersHaveToEnd) {
    const std::string header = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                               "property float z\nelement face 1\nproperty list uchar int vertex_indices\n";
    const std::string triangle = "0 0 0\n0 1 0\n1 0 0\n3 0 1 2\n";
    const std::string capitals = "PLY" + header.substr(3); // which the importer accepts too
    for (const std::string &text : {header, header + "end_head", header + triangle, capitals}) {
        writeText(directory / "cut.ply", text);
        try {
            readMesh(directory / "cut.ply", Transform());
            ADD_FAILURE() << text;
        } catch (const InputError &error) {
            EXPECT_NE(std::string(error.what()).find("\"end_header\" is expected"), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(read("whole.ply", header + "end_header\n" + triangle).triangles.size(), 1u);
}

// A file that was copied only in part.
TEST_F(MeshFileTest, TextHasToBeWhole) {
    const std::string header = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                               "property float z\nelement face 2\nproperty list uchar int vertex_indices\nend_header\n";
    const std::vector<std::string> lines{"0 0 0\n", "0 1 0\n", "1 0 0\n", "1 1 0\n", "3 0 1 2\n", "3 2 1 3\n"};
    std::string text = header;
    for (std::size_t there = 0; there < lines.size(); text += lines[there++]) {
        try {
            read("cut.ply", text + "\n"); // an empty line does not count
            ADD_FAILURE() << there;
        } catch (const InputError &error) {
            EXPECT_EQ(error.what(), (directory / "cut.ply") +
                                        ": cannot read the mesh: it ends too early: of 6 lines after its header, " +
                                        std::to_string(there) + " are there");
        }
    }
    EXPECT_EQ(read("whole.ply", text).triangles.size(), 2u);
    text.pop_back(); // the last line needs no end
    EXPECT_EQ(read("whole.ply", text).triangles.size(), 2u);
    std::string other;
    for (const char letter : text) other += letter == '\n' ? std::string("\r\n") : std::string(1, letter);
    EXPECT_EQ(read("other.ply", other).triangles.size(), 2u);
}

// A pipe would make the program wait, whether it is the mesh itself or a file that the mesh names.
TEST_F(MeshFileTest, OnlyRegularFilesAreRead) {
    const std::string pipe = directory / "pipe.obj";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    try {
        readMesh(pipe, Transform());
        ADD_FAILURE();
    } catch (const InputError &error) {
        EXPECT_EQ(error.what(), pipe + ": cannot read the mesh: it is a pipe");
    }
    const std::string materials = "mtllib pipe.obj\n";
    EXPECT_EQ(read("a.obj", materials + kUpObj).triangles.size(), 1u);
}

TEST_F(MeshFileTest, PlacesThatAreNoNumbersAreDropped) {
    const Mesh mesh = read("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv nan 0 0\nf 1 2 3\nf 1 2 4\n");
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

} // namespace
} // namespace velm::host::test
