// "velm bake --vertices": known values at the vertices of the files that it writes, and what it refuses.
#include "host/io/files.h"
#include "host/object/object_geometry.h"
#include "host/render/geometry/mesh.h"
#include "tests/cli/command.h"
#include "tests/files/gltf_file.h"
#include "tests/object/object_bytes.h"
#include "tests/temporary_directory.h"

#include <cmath>
#include <gtest/gtest.h>
#include <utility>

namespace velm::host {
namespace {

using test::Outcome;
using test::TemporaryDirectory;

// Values are those of points near the corners: moved by 1/512 of both edges, which are 6 m long at most.
constexpr double kOffCorner = 2 * 6.0 / 512 + 1e-5;

// A square that faces up, high above another one, and a cube of 1 m between them, half a metre above the lower one.
std::string squaresAndCube() {
    std::vector<float> points;
    for (const auto &[side, y] : {std::pair{1.0F, 10.0F}, std::pair{3.0F, 0.0F}})
        points.insert(points.end(), {-side, y, -side, -side, y, side, side, y, side, side, y, -side});
    for (const float z : {0.0F, 1.0F})
        for (const float y : {0.5F, 1.5F})
            for (const float x : {0.0F, 1.0F}) points.insert(points.end(), {x, y, z});
    return test::objectFile(test::pointsChunk(points) + test::polygonsChunk("FACE", {{0, 1, 2, 3},
                                                                                     {4, 5, 6, 7},
                                                                                     {8, 10, 11, 9},
                                                                                     {12, 13, 15, 14},
                                                                                     {8, 9, 13, 12},
                                                                                     {10, 14, 15, 11},
                                                                                     {8, 12, 14, 10},
                                                                                     {9, 11, 15, 13}}));
}
constexpr std::uint32_t kUpperPoints = 4, kAllPoints = 16, kLowerSide = 4; // of the upper square; of the cube

class BakeVertices : public testing::Test {
  protected:
    // A scene with one object, whose surface has some nodes.
    std::string scene(const std::string &shape, const std::string &placing = "") {
        return directory_.write("scene.json",
                                R"({"cameras": {"Main": {"position": [0, 1, -9]}}, "objects": {"Thing": {)" + shape +
                                    placing + R"(, "surface": "Stone"}},
            "surfaces": {"Stone": {"smoothingAngle": 0, "nodes": {
                "AO": {"server": "Velm Ambient Occlusion"}, "Spot": {"server": "Spot Info"},
                "Random": {"server": "Velm Random"}, "Paint": {"server": "Constant Color", "settings": {"Color": [0.25, 0.5, 1]}}
            }}}})");
    }
    std::string meshScene(const std::string &file, const std::string &placing = "") {
        return scene(R"("mesh": {"file": ")" + file + "\"}", placing);
    }
    std::string objectScene(const std::string &placing = "") {
        directory_.write("thing.lwo", squaresAndCube());
        return meshScene("thing.lwo", placing);
    }

    Outcome bake(const std::string &file, const std::string &output, const std::string &written,
                 std::vector<std::string> options = {}) {
        options.insert(options.begin(),
                       {"bake", file, "--output", output, "--vertices", "AO", "-o", directory_ / written, "--quiet"});
        return test::velm(options);
    }
    std::string baked(const std::string &file, const std::string &output, const std::string &written,
                      std::vector<std::string> options = {}) {
        const Outcome outcome = bake(file, output, written, std::move(options));
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return readFile(directory_ / written);
    }
    // Expects an error and no output.
    void expectError(const Outcome &outcome, int status, const std::string &message, const std::string &written) {
        EXPECT_EQ(outcome.status, status);
        EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
        EXPECT_FALSE(std::filesystem::exists(directory_ / written));
    }

    const TemporaryDirectory directory_;
};

std::vector<ObjectVertexMap> mapsOf(const std::string &bytes) {
    return readObject(bytes, "baked.lwo").layers.at(0).maps;
}

TEST_F(BakeVertices, AreOpenWhereNothingIsInTheWay) {
    const std::vector<ObjectVertexMap> maps = mapsOf(baked(objectScene(), "AO.Scalar", "out.lwo"));
    ASSERT_FALSE(maps.empty());
    EXPECT_EQ(maps[0].type, fourCC("WGHT"));
    EXPECT_EQ(maps[0].name, "AO");
    EXPECT_EQ(maps[0].points.size(), kAllPoints);
    for (std::size_t i = 0; i < kUpperPoints; ++i) EXPECT_EQ(maps[0].numbers.at(i), 1.0F);
    ASSERT_EQ(maps.size(), 2U) << "the sides of the cube differ";
    std::size_t count = 0;
    for (std::size_t i = 0; i < maps[1].points.size(); ++i) {
        if (maps[1].polygons[i] != kLowerSide) continue;
        EXPECT_LT(maps[1].numbers[i], 0.9F);
        ++count;
    }
    EXPECT_EQ(count, 4U);
}

TEST_F(BakeVertices, HavePositionsOfTheirPoints) {
    const std::string bytes = baked(objectScene(R"(, "position": [5, 1, 2], "rotation": [20, 30, 40])"),
                                    "Spot.Object Position", "out.lwo", {"--samples", "1"});
    const ObjectLayer layer = readObject(bytes, "out.lwo").layers.at(0);
    ASSERT_FALSE(layer.maps.empty());
    EXPECT_EQ(layer.maps[0].type, fourCC("RGB "));
    EXPECT_EQ(layer.maps[0].points.size(), kAllPoints);
    for (std::size_t i = 0; i < layer.maps[0].points.size(); ++i)
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_NEAR(layer.maps[0].numbers[3 * i + k], layer.points[layer.maps[0].points[i]][k], kOffCorner);
}

TEST_F(BakeVertices, DoNotDependOnTheNumberOfWorkersOrEarlierBakes) {
    const std::string file = objectScene();
    const std::string one = baked(file, "Random.Out", "one.lwo", {"--threads", "1"});
    EXPECT_EQ(baked(file, "Random.Out", "three.lwo", {"--threads", "3"}), one);
    EXPECT_EQ(baked(meshScene("one.lwo"), "Random.Out", "again.lwo"), one);
    EXPECT_NE(baked(file, "Random.Out", "other.lwo", {"--seed", "1"}), one);
}

TEST_F(BakeVertices, OfAnObjectByItself) {
    const std::string object = directory_.write("thing.lwo", squaresAndCube());
    const ObjectLayer layer = readObject(baked(object, "Diffuse", "out.lwo"), "out.lwo").layers.at(0);
    ASSERT_EQ(layer.maps.size(), 1U);
    EXPECT_EQ(layer.maps[0].points.size(), kAllPoints);
}

TEST_F(BakeVertices, BecomeTheMapThatIsWanted) {
    const std::string file = objectScene();
    const auto mapOf = [&](const char *output, const char *kind) {
        return mapsOf(baked(file, output, "out.lwo", {"--as", kind, "--samples", "1"})).at(0);
    };
    const ObjectVertexMap weights = mapOf("Paint.Color", "WGHT"), alpha = mapOf("Paint.Color", "RGBA"),
                          grey = mapOf("AO.Scalar", "RGB");
    EXPECT_NEAR(weights.numbers.at(0), 0.299 * 0.25 + 0.587 * 0.5 + 0.114, 1e-6); // the luminance
    EXPECT_EQ(std::vector<float>(alpha.numbers.begin(), alpha.numbers.begin() + 4),
              (std::vector<float>{0.25F, 0.5F, 1, 1}));
    EXPECT_EQ(grey.size, 3U);
    EXPECT_EQ(grey.numbers.at(0), grey.numbers.at(2));
}

TEST_F(BakeVertices, AreWrittenToPlyAndGlb) {
    const std::string shape = scene(R"("sphere": {"segments": 16})");
    baked(shape, "Paint.Color", "ball.ply");
    const Mesh ply = readMesh(directory_ / "ball.ply", {});
    ASSERT_EQ(ply.vertexMaps.size(), 1U);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(ply.vertexMaps[0].valueOf(0)[k], 0.25 * std::pow(2, k), 0.002);
    directory_.write("square.gltf", test::gltfSquare({}, "", ""));
    baked(meshScene("square.gltf"), "Paint.Color", "square.glb");
    const Mesh glb = readMesh(directory_ / "square.glb", {});
    ASSERT_EQ(glb.vertexMaps.size(), 1U);
    EXPECT_EQ(glb.vertexMaps[0].valueOf(0)[1], 0.5F);
}

TEST_F(BakeVertices, RefuseWhatIsImpossible) {
    const std::string file = objectScene();
    expectError(bake(file, "AO.Scalar", "out.glb"), kExitUsage, "neither a .glb nor a .gltf file", "out.glb");
    expectError(bake(file, "AO.Scalar", "out.png"), kExitUsage, ".lwo, .glb or .ply", "out.png");
    expectError(bake(file, "Normal", "out.lwo"), kExitUsage, "normals", "out.lwo");
    expectError(bake(file, "AO.Nothing", "out.lwo"), kExitUsage, "AO.Scalar", "out.lwo");
    expectError(bake(file, "AO.Scalar", "out.lwo", {"--as", "UV"}), kExitUsage, "WGHT", "out.lwo");
    expectError(bake(file, "AO.Scalar", "out.lwo", {"--size", "64"}), kExitUsage, "--size", "out.lwo");
    expectError(bake(scene(R"("plane": {})"), "AO.Scalar", "out.lwo"), kExitUsage, "no mesh file", "out.lwo");
    directory_.write("old.lwo", test::oldObjectFile(test::chunk("PNTS", test::reals({0, 0, 0, 0, 0, 1, 1, 0, 0})) +
                                                    test::chunk("SRFS", test::cString("Stone")) +
                                                    test::chunk("POLS", test::words({3, 0, 1, 2, 1}))));
    expectError(bake(meshScene("old.lwo"), "AO.Scalar", "out.lwo"), kExitInput, "LWOB", "out.lwo");
}

TEST_F(BakeVertices, DoNotReplaceTheirSource) {
    const std::string file = objectScene(), before = readFile(directory_ / "thing.lwo");
    const Outcome outcome = bake(file, "AO.Scalar", "thing.lwo");
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_EQ(readFile(directory_ / "thing.lwo"), before);
}

} // namespace
} // namespace velm::host
