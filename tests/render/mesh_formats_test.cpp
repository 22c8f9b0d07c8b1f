// The formats of mesh files, and files at which the mesh library crashes, hangs or takes all memory.
#include "host/base/error.h"
#include "host/io/reader_process.h"
#include "host/render/geometry/mesh_formats.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace velm::host::test {
namespace {

const std::string kModels = "/usr/share/assimp/models/"; // of Debian's package assimp-testmodels

std::string bytesOf(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string refusalOf(const std::string &file) {
    try {
        readMesh(file, Transform());
    } catch (const InputError &error) {
        EXPECT_EQ(error.location().file, file);
        return error.message();
    }
    return "it was read";
}

struct Sample {
    const char *format, *file;
    std::size_t triangles;
};
class MeshFormatTest : public testing::TestWithParam<Sample> {};

// Each is read under every name, also one that says another format.
TEST_P(MeshFormatTest, IsRecognisedByTheContents) {
    const TemporaryDirectory directory;
    const std::string bytes = bytesOf(kModels + GetParam().file);
    ASSERT_FALSE(bytes.empty()) << GetParam().file;
    for (const char *name : {"a", "a.obj", "a.PLY", "a.lws", "a.gltf"}) {
        writeText(directory / name, bytes);
        const MeshFormat *format = meshFormatOf(directory / name);
        ASSERT_TRUE(format);
        EXPECT_STREQ(format->name, GetParam().format);
        EXPECT_EQ(readMesh(directory / name, Transform()).triangles.size(), GetParam().triangles) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, MeshFormatTest,
    testing::Values(Sample{"LWO", "LWO/LWO2/boxuv.lwo", 12}, Sample{"LXO", "LWO/LXOB_Modo/sphereWithVertMap.lxo", 528},
                    Sample{"FBX", "FBX/box.fbx", 12},
                    Sample{"GLB", "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", 12},
                    Sample{"glTF", "glTF2/BoxTextured-glTF-Embedded/BoxTextured.gltf", 12},
                    Sample{"PLY", "PLY/cube.ply", 12}, Sample{"DAE", "Collada/cube_triangulate.dae", 12},
                    Sample{"3DS", "3DS/cube_with_diffuse_texture.3DS", 12}, Sample{"OFF", "OFF/Cube.off", 12},
                    Sample{"STL", "STL/triangle.stl", 1}, Sample{"OBJ", "OBJ/box.obj", 12}),
    [](const auto &sample) { return std::string("The") + sample.param.format; });

TEST(MeshFormats, AreAllTested) { EXPECT_EQ(meshFormats(), "LWO, LXO, FBX, GLB, glTF, PLY, DAE, 3DS, OFF, STL, OBJ"); }

TEST(MeshFormats, AreDocumented) {
    for (const char *name : {"/docs/scene.md", "/docs/commands.md", "/docs/scene.schema.json"}) {
        std::string text = bytesOf(std::string(VELM_SOURCE_DIR) + name);
        std::replace(text.begin(), text.end(), '\n', ' ');
        const std::string list = meshFormats(), last = list.substr(list.rfind(' ') + 1);
        const std::string start = list.substr(0, list.rfind(','));
        EXPECT_TRUE(text.find(start + " and " + last) != std::string::npos ||
                    text.find(start + " or " + last) != std::string::npos)
            << name;
    }
}

// Importers look for other files by the name of the mesh file, and name it in their errors.
TEST(MeshFormats, ImportersKnowTheRealName) {
    const TemporaryDirectory directory;
    writeText(directory / "a.mtl", "newmtl red\nnewmtl green\n");
    writeText(directory / "a.OBJ", "mtllib missing.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\nusemtl green\n"
                                   "f 3 2 1\n");
    EXPECT_EQ(readMesh(directory / "a.OBJ", Transform()).materials, (std::vector<std::string>{"red", "green"}));
    writeText(directory / "a.dat", bytesOf(kModels + "glTF/BoxTextured-glTF-Binary/BoxTextured.glb"));
    EXPECT_EQ(refusalOf(directory / "a.dat").find(".dat."), std::string::npos) << refusalOf(directory / "a.dat");
}

TEST(MeshFormats, BinaryStlMayBeginLikeText) {
    const TemporaryDirectory directory;
    std::string bytes = "solid facet";
    bytes.resize(80, ' ');
    bytes += std::string("\1\0\0\0", 4);
    const std::array<float, 12> triangle{0, 1, 0, 0, 0, 0, 1, 0, 0, 1, 0, -2};
    bytes.append(reinterpret_cast<const char *>(triangle.data()), sizeof triangle).append(2, '\0');
    writeText(directory / "a", bytes);
    EXPECT_STREQ(meshFormatOf(directory / "a")->name, "STL");
}

// The mesh library reads these formats, too, or would choose one of its readers by the name of the file.
TEST(MeshFormats, AllOthersAreRefused) {
    const TemporaryDirectory directory;
    const std::array<std::pair<const char *, std::string>, 8> files{
        {{"a.lws", "LWSC\n3\n\nFirstFrame 0\n"},
         {"a.smd", "version 1\nnodes\n0 \"root\" -1\nend\n"},
         {"a.ase", "*3DSMAX_ASCIIEXPORT 200\n"},
         {"a.ogex", "Metric (key = \"up\") {string {\"z\"}}\n"},
         {"a.3mf", std::string("PK\3\4\x14\0\0\0", 8)},
         {"a.raw", "0 0 0 1 0 0 1 1 0\n"},
         {"a.json", R"({"objects": {"Ball": {"sphere": {}, "surface": "Clay"}}, "surfaces": {"Clay": {}}})"},
         {"a.obj", std::string("\x7f\x45LF\2\1\1\0", 8)}}};
    for (const auto &[name, bytes] : files) {
        writeText(directory / name, bytes);
        EXPECT_EQ(refusalOf(directory / name),
                  "cannot read the mesh: it has none of the formats that are read: " + meshFormats());
    }
    writeText(directory / "empty.obj", "");
    EXPECT_EQ(refusalOf(directory / "empty.obj"), "cannot read the mesh: it is empty");
}

struct FaultyMesh : testing::Test {
    ~FaultyMesh() override { readLimits() = {}; }
    const TemporaryDirectory directory;
};

TEST_F(FaultyMesh, ThatMakesTheLibraryCrash) {
    const std::string refusal = refusalOf(VELM_SOURCE_DIR "/tests/render/faulty_meshes/crash.lxo");
    EXPECT_TRUE(refusal.starts_with("cannot read the mesh: the library that reads it ")) << refusal;
}

TEST_F(FaultyMesh, ThatTakesForEver) {
    readLimits().seconds = 0.5;
    writeText(directory / "a.ply", "ply\nformat ascii 1.0\nelement tristrips 0\nelement 100000000 1\nend_header\n0\n");
    EXPECT_EQ(refusalOf(directory / "a.ply"), "cannot read the mesh: it takes longer than 0.5 s (see --read-time)");
}

TEST_F(FaultyMesh, ThatTakesAllMemory) {
    readLimits().mebibytes = 256;
    writeText(directory / "a.off", "OFF\n353535235358 6 0\n-0.5 -0.5 0.5\n0.5 -0.5 0.5\n-0.5 0.5 0.5\n3 0 1 2\n");
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) // whose allocator ends the process itself
    EXPECT_NE(refusalOf(directory / "a.off"), "it was read");
#else
    EXPECT_EQ(refusalOf(directory / "a.off"),
              "cannot read the mesh: it takes more than 256 MiB of memory (see --read-memory)");
#endif
}

} // namespace
} // namespace velm::host::test
