// "velm convert": the scene that it writes renders to the picture of the file that it was made of.
#include "host/image/file_pixels.h"
#include "host/io/files.h"
#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velm::host {
namespace {

using test::Outcome;
using test::TemporaryDirectory;

const std::string kModels = "/usr/share/assimp/models/";
constexpr const char *kTriangle = "v 0 0 0\nv 1 0 0\nv 0 3 0\nf 1 2 3\n";

std::vector<float> rendered(const std::string &file, const std::string &picture) {
    const Outcome outcome =
        test::velm({"render", file, "-o", picture, "--size", "32x18", "--samples", "1", "--threads", "1", "--quiet"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    const FilePixels pixels = readFilePixels(picture);
    return {pixels.values.begin(), pixels.values.end()};
}

Outcome convert(const std::string &input, const std::string &output, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"convert", input, output});
    return test::velm(options, false);
}

// Converts the file, and expects the same picture of the new scene. Gives the scene's text.
nlohmann::json expectSamePicture(const TemporaryDirectory &directory, const std::string &input) {
    const std::string output = directory / "converted.json";
    const Outcome outcome = convert(input, output);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.out, output + '\n');
    const auto before = rendered(input, directory / "a.exr");
    EXPECT_GT(std::ranges::max(before), 0.0F) << input;
    EXPECT_EQ(rendered(output, directory / "b.exr"), before) << input;
    return nlohmann::json::parse(readFile(output));
}

class Convert : public testing::Test {
  protected:
    const TemporaryDirectory directory_;
};

TEST_F(Convert, MeshesRenderTheSame) {
    expectSamePicture(directory_, directory_.write("sail.obj", kTriangle));
    expectSamePicture(directory_, kModels + "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb");
    const nlohmann::json stl = expectSamePicture(directory_, kModels + "STL/Spider_binary.stl");
    EXPECT_EQ(stl["objects"]["Spider_binary"]["rotation"], (std::vector<double>{0, 90, 0})) << "+Z is up in the file";
}

TEST_F(Convert, ObjectsWithLayersRenderTheSame) {
    const nlohmann::json scene = expectSamePicture(directory_, kModels + "LWO/LWO2/hierarchy.lwo");
    EXPECT_EQ(scene["render"]["workflow"], "classic");
    EXPECT_FALSE(scene["surfaces"].contains("Neutral")) << "the object has its own surfaces";
}

TEST_F(Convert, ObjectsKeepTheirNetworksAndImages) {
    const std::string glow = directory_.write("glow.json", R"({"surfaces": {"Default": {
        "settings": {"Luminosity": 1, "Diffuse": 0},
        "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.25, 0.5, 1]}}},
        "connections": ["Paint.Color -> Default.Color"]}}})");
    const std::string object = directory_ / "glow.lwo";
    ASSERT_EQ(test::velm({"pack", glow, kModels + "LWS/simple_cube.lwo", "-o", object}).status, kExitDone);
    expectSamePicture(directory_, object);
    const auto values = rendered(directory_ / "converted.json", directory_ / "b.exr");
    const std::size_t middle = (9 * 32 + 16) * 4;
    EXPECT_EQ((std::vector<float>{values[middle], values[middle + 1], values[middle + 2]}),
              (std::vector<float>{0.25F, 0.5F, 1}));
    const nlohmann::json textured = expectSamePicture(directory_, kModels + "LWO/LWO2/boxuv.lwo");
    EXPECT_EQ(textured["images"].begin().value()["file"], kModels + "LWO/LWO2/boxuv.png");
}

// The contents decide what a file is, so that a scene that names it has to find its surfaces, too.
TEST_F(Convert, ObjectsNeedNoEnding) {
    expectSamePicture(directory_, directory_.write("hierarchy", readFile(kModels + "LWO/LWO2/hierarchy_smoothed.lwo")));
}

TEST_F(Convert, ScenesRenderTheSame) {
    const std::string example = VELM_SOURCE_DIR "/examples/group.json";
    const nlohmann::json scene = expectSamePicture(directory_, example);
    EXPECT_FALSE(scene.contains("$schema")) << "which is relative to the old directory";
    // Written again, it is the same text.
    const std::string first = directory_ / "converted.json", second = directory_ / "second.json";
    ASSERT_EQ(convert(first, second).status, kExitDone);
    EXPECT_EQ(readFile(second), readFile(first));
}

TEST_F(Convert, WritesWhatTheOptionsAskFor) {
    const std::string mesh = directory_.write("models/sail.obj", kTriangle), output = directory_ / "sail.json";
    const Outcome outcome = convert(mesh, output, {"--view", "back", "--rig", "none", "--workflow", "classic"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.err, "velm: note: " + mesh +
                               ": added what the file does not bring: a camera (back view), a backdrop, a neutral "
                               "surface\n");
    const nlohmann::json scene = nlohmann::json::parse(readFile(output));
    EXPECT_FALSE(scene.contains("lights"));
    EXPECT_EQ(scene["render"]["workflow"], "classic");
    EXPECT_EQ(scene["cameras"]["View"]["rotation"], (std::vector<double>{180, 0, 0}));
    EXPECT_EQ(scene["objects"]["sail"]["mesh"]["file"], "models/sail.obj") << "relative to the new file";
}

TEST_F(Convert, FindsImagesWithoutTheDataDirectories) {
    const std::string object = directory_.write("a/box.lwo", readFile(kModels + "LWO/LWO2/boxuv.lwo"));
    const std::string output = directory_ / "box.json";
    ASSERT_EQ(convert(object, output, {"--data", kModels + "LWO/LWO2"}).status, kExitDone);
    const Outcome outcome =
        test::velm({"render", output, "-o", directory_ / "a.png", "--size", "8x8", "--quiet", "--strict"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
}

TEST_F(Convert, ReplacesNothingThatItReads) {
    const std::string text = R"({"cameras": {"Main": {}}})", scene = directory_.write("scene.json", text);
    EXPECT_EQ(convert(scene, scene).status, kExitUsage);
    std::filesystem::create_symlink(scene, directory_ / "link.json");
    EXPECT_EQ(convert(scene, directory_ / "link.json").status, kExitUsage);
    const std::string mesh = directory_.write("sail.json", kTriangle); // a mesh, whatever its name
    const std::string named = directory_.write("named.json", R"({"cameras": {"Main": {}}, "surfaces": {"Clay": {}},
        "objects": {"Sail": {"mesh": {"file": "sail.json"}, "surface": "Clay"}}})");
    EXPECT_EQ(convert(named, mesh).status, kExitUsage);
    EXPECT_EQ(readFile(mesh), kTriangle);
    EXPECT_EQ(readFile(scene), text);
}

TEST_F(Convert, RefusesOtherOutputsAndWhatIsNotReadWhereStrict) {
    const std::string mesh = directory_.write("sail.obj", kTriangle);
    const Outcome picture = convert(mesh, directory_ / "sail.png");
    EXPECT_EQ(picture.status, kExitUsage);
    EXPECT_NE(picture.err.find("sail.png\": the name of a scene file ends in .json"), std::string::npos) << picture.err;
    EXPECT_EQ(convert(mesh, directory_ / "none/sail.json").status, kExitMachine);
    EXPECT_EQ(convert(directory_ / "none.obj", directory_ / "a.json").status, kExitInput);
    directory_.write("grey.mtl", "newmtl Grey\nKd 0.5 0.5 0.5\nmap_Ks spots.png\n");
    const std::string grey = directory_.write("grey.obj", std::string("mtllib grey.mtl\nusemtl Grey\n") + kTriangle);
    EXPECT_EQ(convert(grey, directory_ / "grey.json", {"--strict"}).status, kExitInput);
    EXPECT_FALSE(std::filesystem::exists(directory_ / "grey.json"));
}

} // namespace
} // namespace velm::host
