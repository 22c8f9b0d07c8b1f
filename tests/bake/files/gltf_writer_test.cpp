// Colours of vertices in glTF files.
#include "host/bake/files/gltf_writer.h"

#include "host/bake/files/gltf_document.h"
#include "host/io/files.h"
#include "tests/bake/files/position_values.h"
#include "tests/files/gltf_file.h"
#include "tests/object/object_bytes.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>

namespace velm::host::test {
namespace {

std::array<double, 3> colourAt(const Vec3 &p) { return {0.5 + 0.25 * p.x, 2 * p.y, 0.5 - p.z}; }

struct GltfWriterTest : testing::Test {
    std::string baked(const std::string &file) {
        const Mesh mesh = readMesh(file, {});
        return gltfWithColours(file, mesh, valuesOfPositions(mesh, {}, 3, colourAt), {});
    }

    // Expects the colours of a file, as our reader and the mesh library behind it give them.
    void expectColours(const std::string &bytes) {
        const Mesh read = readMesh(directory.write("read.glb", bytes), {});
        ASSERT_EQ(read.vertexMaps.size(), 1U);
        for (std::size_t i = 0; i < read.points.size(); ++i) {
            const float *p = read.points[i].position;
            const std::array<double, 3> expected = colourAt({p[0], p[1], p[2]});
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_NEAR(double{read.vertexMaps[0].valueOf(i)[k]}, expected[k], kRoundingError);
        }
    }

    const TemporaryDirectory directory;
};

TEST_F(GltfWriterTest, AddsTheColours) {
    const std::string file = directory.write("square.gltf", gltfSquare({}, "", ""));
    const std::string bytes = baked(file);
    expectColours(bytes);
    const GltfDocument before(file), after(directory.write("made.glb", bytes));
    EXPECT_EQ(after.vectors(0, 3), before.vectors(0, 3));
    EXPECT_EQ(after.integers(1), before.integers(1));
}

TEST_F(GltfWriterTest, LeavesTheRestOfTheDocument) {
    const std::string extras = R"("asset": {"version": "2.0", "extras": {"b": [1.5, null], "a": "é"}})";
    std::string text = gltfSquare({}, "", "");
    text.replace(text.find(R"("asset": {"version": "2.0"})"), 27, extras);
    const GltfDocument before(directory.write("square.gltf", text));
    GltfDocument after(directory.write("made.glb", baked(directory / "square.gltf")));
    EXPECT_EQ(after.json["meshes"][0]["primitives"][0]["attributes"].erase("COLOR_0"), 1U);
    after.json["accessors"].erase(2);
    after.json["bufferViews"].erase(2);
    after.json["buffers"] = before.json["buffers"];
    EXPECT_EQ(after.json.dump(), before.json.dump());
}

TEST_F(GltfWriterTest, ReplacesColours) {
    const std::string file = directory.write("square.gltf", gltfSquare({}, "", ""));
    const std::string once = baked(file);
    EXPECT_EQ(baked(directory.write("once.glb", once)), once);
    const Mesh mesh = readMesh(file, {});
    const auto black = [](const Vec3 &) { return std::array<double, 3>{0, 0, 0}; };
    const std::string other = gltfWithColours(file, mesh, valuesOfPositions(mesh, {}, 3, black), {});
    EXPECT_EQ(baked(directory.write("other.glb", other)), once);
    // A colour with alpha takes more room, so that it cannot replace the other one in its place.
    const auto half = [](const Vec3 &) { return std::array<double, 4>{0, 0, 0, 0.5}; };
    const std::string twice = gltfWithColours(directory / "once.glb", mesh, valuesOfPositions(mesh, {}, 4, half), {});
    EXPECT_EQ(readMesh(directory.write("twice.glb", twice), {}).vertexMaps.at(0).size, 4U);
}

TEST_F(GltfWriterTest, FollowsNodes) {
    // The square of the first node is at the origin; the others are below each other, turned and mirrored.
    std::string text =
        gltfSquare({R"({"name": "Empty", "translation": [0, 0, 5], "rotation": [0, 0.6, 0, 0.8], "children": [2]})",
                    R"({"mesh": 1, "scale": [-2, 1, 1]})"},
                   "", "");
    text.replace(text.find("[0, 1, 2]"), 9, "[0, 1]");
    const std::string mesh = R"("meshes": [)";
    text.replace(text.find(mesh), mesh.size(),
                 mesh + R"({"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}, )");
    expectColours(baked(directory.write("nodes.gltf", text)));
}

TEST_F(GltfWriterTest, TakesTheMeanOfAllNodesThatShowAMesh) {
    const std::string text = gltfSquare({R"({"mesh": 0, "translation": [4, 0, 0]})"}, "", "");
    const GltfDocument after(directory.write("made.glb", baked(directory.write("two.gltf", text))));
    const std::vector<float> points = after.vectors(0, 3), colours = after.vectors(2, 3);
    ASSERT_EQ(colours.size(), 12U);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto expected = colourAt({double{points[3 * i]} + 2, points[3 * i + 1], -double{points[3 * i + 2]}});
        for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(double{colours[3 * i + k]}, expected[k], kRoundingError);
    }
}

TEST_F(GltfWriterTest, TakesStripsAndFans) {
    for (const char *mode : {"5", "6"}) {
        std::string text = gltfSquare({}, "", "");
        const std::string indices = R"("indices": 1)";
        text.replace(text.find(indices), indices.size(), std::string(R"("mode": )") + mode);
        expectColours(baked(directory.write("strip.gltf", text)));
    }
}

TEST_F(GltfWriterTest, MakesNumbersGrey) {
    const std::string file = directory.write("square.gltf", gltfSquare({}, "", ""));
    const Mesh mesh = readMesh(file, {});
    const auto quarter = [](const Vec3 &) { return std::array<double, 1>{0.25}; };
    const GltfDocument after(
        directory.write("made.glb", gltfWithColours(file, mesh, valuesOfPositions(mesh, {}, 1, quarter), {})));
    EXPECT_EQ(after.vectors(2, 3), std::vector<float>(12, 0.25F));
}

TEST_F(GltfWriterTest, RefusesFilesThatCannotHoldColours) {
    const std::string square = gltfSquare({}, "", "");
    const std::string file = directory.write("square.gltf", square);
    const Mesh mesh = readMesh(file, {});
    const MeshValues values = valuesOfPositions(mesh, {}, 3, colourAt);
    const auto errorWith = [&](const std::string &from, const std::string &to) {
        std::string text = square;
        text.replace(text.find(from), from.size(), to);
        return errorOf([&] { gltfWithColours(directory.write("bad.gltf", text), mesh, values, {}); });
    };
    const std::string bad = directory / "bad.gltf";
    EXPECT_EQ(errorWith(R"("asset")", R"("extensionsRequired": ["KHR_draco_mesh_compression"], "asset")"),
              bad + ": it is compressed (KHR_draco_mesh_compression), so that values cannot be added to it");
    EXPECT_EQ(errorWith(R"("version": "2.0")", R"("version": "1.0")"), bad + ": it is not of version 2 of glTF");
    EXPECT_EQ(errorWith(R"("count": 4)", R"("count": 400)"), bad + ": accessor 0 ends outside of its buffer");
    EXPECT_EQ(errorWith(R"("bufferView": 0, "componentType": 5126)", R"("componentType": 5126)"),
              bad + ": accessor 0 is sparse, so that values cannot be added to the file");
    EXPECT_EQ(errorWith(R"("nodes": [{)", R"("nodes": [{"children": [0], )"), bad + ": a node of it is below itself");
    EXPECT_EQ(errorWith(R"("mesh": 0)", R"("mesh": 7)"), bad + ": its description in JSON is damaged");
    EXPECT_EQ(errorWith(R"("buffer": 0)", R"("buffer": 1)"), bad + ": there is no buffer 1");
    EXPECT_EQ(errorWith(R"("count": 6)", R"("count": 3)"),
              bad + ": its polygons are not those of the mesh that was read from it before; it may have been changed "
                    "meanwhile");
    EXPECT_EQ(errorOf([&] { GltfDocument(directory.write("bad.glb", "glTF\2")); }),
              directory / "bad.glb" + ": it is not of version 2 of glTF");
}

TEST_F(GltfWriterTest, NamesOtherFiles) {
    std::string text = gltfSquare({}, "", "");
    text.replace(
        text.find(R"("asset")"), 7,
        R"("images": [{"uri": "wood.png"}, {"uri": "data:image/png;base64,AAAA"}, {"bufferView": 0}], "asset")");
    EXPECT_EQ(namesInGltf(directory.write("a.gltf", text)), std::vector<std::string>{"wood.png"});
}

TEST_F(GltfWriterTest, FitsRealFiles) {
    std::size_t count = 0;
    for (const char *ending : {".glb", ".gltf"})
        for (const std::filesystem::path &file : realFiles(ending)) {
            SCOPED_TRACE(file);
            std::string bytes;
            // Files that cannot be read, and those that cannot hold colours, are refused.
            const std::string error = errorOf([&] { bytes = baked(file); });
            if (!error.empty()) continue;
            const Mesh before = readMesh(file, {}), after = readMesh(directory.write("made.glb", bytes), {});
            EXPECT_EQ(after.polygonCount, before.polygonCount);
            EXPECT_FALSE(after.vertexMaps.empty());
            EXPECT_EQ(baked(directory / "made.glb"), bytes);
            ++count;
        }
    if (count == 0) GTEST_SKIP() << "assimp-testmodels is not installed";
}

} // namespace
} // namespace velm::host::test
