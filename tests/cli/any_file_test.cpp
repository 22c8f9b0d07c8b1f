// "velm render" and "velm info" with files of all kinds.
#include "host/image/file_pixels.h"
#include "tests/cli/command.h"
#include "tests/files/test_files.h"
#include "tests/object/object_bytes.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velm::host {
namespace {

using test::Outcome;

// A cube of 2 m that stands on y = 1, in right-handed axes.
constexpr const char *kCube = "o Cube\nv -1 1 -1\nv 1 1 -1\nv 1 3 -1\nv -1 3 -1\nv -1 1 1\nv 1 1 1\nv 1 3 1\nv -1 3 1\n"
                              "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 4 8 7 3\nf 1 5 8 4\nf 2 3 7 6\n";

class AnyFile : public testing::Test {
  protected:
    test::TemporaryDirectory directory_;
    std::string cube_ = directory_.write("cube.obj", kCube);

    std::string file(const std::string &name) const { return directory_ / name; }
    Outcome render(const std::vector<std::string> &options) const {
        std::vector<std::string> words = {"render", cube_, "-o", file("a.exr"), "--size", "64x36", "--samples", "2"};
        words.insert(words.end(), options.begin(), options.end());
        return test::velm(words);
    }
    nlohmann::json info(const std::string &name) const {
        const Outcome outcome = test::velm({"info", name, "--json"});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return nlohmann::json::parse(outcome.out);
    }
};

// The corners of the picture are backdrop or ground, and its middle is lit.
TEST_F(AnyFile, RendersAMeshThatBringsNothing) {
    const Outcome outcome = render({"--quiet", "--view", "front"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.err, "velm: note: " + cube_ +
                               ": added what the file does not bring: a camera (front view), lights (studio), a "
                               "ground, a backdrop, a neutral surface\n");
    const FilePixels picture = readFilePixels(file("a.exr"));
    const float middle = picture.pixel(32, 18)[0], backdrop = picture.pixel(1, 1)[0];
    EXPECT_GT(middle, 0.3F);
    EXPECT_LT(middle, 1.0F);
    EXPECT_NEAR(backdrop, 0.12F, 1e-3F);
    EXPECT_GT(std::abs(middle - backdrop), 0.1F);
}

TEST_F(AnyFile, RendersTheSamePictureAgain) {
    ASSERT_EQ(render({"--threads", "1"}).status, kExitDone);
    std::filesystem::rename(file("a.exr"), file("b.exr"));
    ASSERT_EQ(render({"--threads", "2"}).status, kExitDone);
    EXPECT_EQ(readFilePixels(file("a.exr")).values, readFilePixels(file("b.exr")).values);
}

TEST_F(AnyFile, RendersAgainWhereTheViewOrTheRigIsAnother) {
    ASSERT_EQ(render({}).status, kExitDone);
    const auto isSkipped = [&](const std::vector<std::string> &options) {
        std::vector<std::string> all = options;
        all.emplace_back("--skip-existing");
        return render(all).err.find("exists") != std::string::npos;
    };
    EXPECT_TRUE(isSkipped({}));
    EXPECT_FALSE(isSkipped({"--view", "back"}));
    EXPECT_FALSE(isSkipped({"--rig", "outdoor"}));
}

TEST_F(AnyFile, DoesNotReplaceAPictureThatItDidNotRender) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory_.path());
    directory_.write("cube.png", "a texture");
    const std::vector<std::string> words = {"render", cube_, "--size", "8x8", "--samples", "1"};
    const Outcome refused = test::velm(words);
    std::filesystem::remove(file("cube.png"));
    const Outcome first = test::velm(words), second = test::velm(words);
    std::filesystem::current_path(before);
    EXPECT_EQ(refused.status, kExitUsage);
    EXPECT_NE(refused.err.find("cube.png exists"), std::string::npos) << refused.err;
    EXPECT_EQ(first.status, kExitDone) << first.err;
    EXPECT_EQ(second.status, kExitDone) << second.err;
}

TEST_F(AnyFile, RefusesOtherFilesAndWords) {
    const Outcome notes = test::velm({"render", directory_.write("notes.txt", "to do")});
    EXPECT_EQ(notes.status, kExitInput);
    EXPECT_NE(notes.err.find("notes.txt: the file is of no kind that is read; these kinds"), std::string::npos)
        << notes.err;
    const Outcome view = render({"--view", "oblique"});
    EXPECT_EQ(view.status, kExitUsage);
    EXPECT_NE(view.err.find("--view: \"oblique\" is none of front, back, left"), std::string::npos) << view.err;
    EXPECT_EQ(render({"--rig", "dark"}).status, kExitUsage);
    EXPECT_EQ(render({"--view", "front", "--camera", "Main"}).status, kExitUsage);
    const Outcome camera = render({"--camera", "Main"});
    EXPECT_EQ(camera.status, kExitUsage);
    EXPECT_NE(camera.err.find("there are none"), std::string::npos) << camera.err;
}

TEST_F(AnyFile, IsArchivedWithWhatIsAdded) {
    ASSERT_EQ(test::velm({"archive", cube_, file("kept")}, false).status, kExitDone);
    ASSERT_EQ(render({}).status, kExitDone);
    const Outcome outcome =
        test::velm({"render", file("kept/scene.json"), "-o", file("b.exr"), "--size", "64x36", "--samples", "2"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(readFilePixels(file("a.exr")).values, readFilePixels(file("b.exr")).values);
}

TEST_F(AnyFile, IsListedAndSentToAFarm) {
    EXPECT_EQ(test::velm({"files", cube_}, false).out, cube_ + '\n');
    const Outcome job = test::velm({"farm", cube_, "--engine", "parallel"}, false);
    EXPECT_EQ(job.status, kExitDone) << job.err;
    EXPECT_NE(job.out.find("cube.obj"), std::string::npos) << job.out;
}

TEST_F(AnyFile, InfoTellsWhatAMeshHolds) {
    const nlohmann::json json = info(cube_);
    EXPECT_EQ(json["kind"], "OBJ");
    EXPECT_EQ(json["units"], "not given by the format; taken as metres");
    EXPECT_EQ(json["bounds"]["low"], (std::vector<double>{-1, 1, -1}));
    EXPECT_EQ(json["bounds"]["high"], (std::vector<double>{1, 3, 1}));
    EXPECT_EQ(json["objects"][0]["polygons"], 6);
    EXPECT_EQ(json["objects"][0]["triangles"], 12);
    EXPECT_TRUE(json["cameras"].empty() && json["lights"].empty() && json["surfaces"].empty());
    EXPECT_FALSE(json.contains("frames"));
    const Outcome text = test::velm({"info", cube_});
    EXPECT_NE(text.out.find("\nbounds    x -1 to 1, y 1 to 3, z -1 to 1\n"), std::string::npos) << text.out;
}

TEST_F(AnyFile, InfoTellsWhatASceneHolds) {
    const std::string scene = directory_.write("scene.json", R"({
        "cameras": {"Main": {"position": [0, 1, -6]}}, "lights": {"Key": {"kind": "area", "position": [1, 5, -3]}},
        "images": {"Gone": {"file": "gone.png"}}, "render": {"lastFrame": 24},
        "objects": {"Cube": {"mesh": {"file": "cube.obj"}, "surface": "Clay"}},
        "surfaces": {"Clay": {"nodes": {"AO": {"server": "Velm Ambient Occlusion"},
                                        "Fine grain": {"server": "Velm Random"}}}}})");
    const nlohmann::json json = info(scene);
    EXPECT_EQ(json["kind"], "scene (JSON)");
    EXPECT_EQ(json["cameras"][0]["name"], "Main");
    EXPECT_EQ(json["lights"][0]["kind"], "area");
    EXPECT_EQ(json["images"][0]["found"], false);
    EXPECT_EQ(json["frames"]["last"], 24);
    EXPECT_EQ(json["surfaces"][0]["nodes"][0]["server"], "Velm Ambient Occlusion");
    EXPECT_EQ(json["surfaces"][0]["nodes"][0]["known"], true);
    const std::string text = test::velm({"info", scene}).out;
    for (const char *part :
         {"camera    \"Main\"", "light     \"Key\": area", "image     \"Gone\": missing: there is no file",
          "node AO: Velm Ambient Occlusion\n", "node \"Fine grain\": Velm Random\n", "frames    1 to 24"})
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
}

TEST_F(AnyFile, InfoTellsTheLayersOfAnObject) {
    using namespace test;
    const std::string object = directory_.write(
        "two.lwo",
        objectFile(tagsChunk({"Clay", "Wheel"}) + layerChunk(0, 0, "Body") + pointsChunk(kSixPoints) +
                   mapChunk("TXUV", 2, "Skin", {{.point = 0, .numbers = {0.5F, 0.5F}}}) +
                   polygonsChunk("FACE", kSquareAndTriangle) + polygonTagsChunk("PART", {{0, 1}}) +
                   cornerMapChunk("TXUV", 2, "Skin", {{.point = 0, .polygon = 0, .numbers = {0, 0}}}) +
                   layerChunk(4, 1, "Spare", words({0})) + pointsChunk({0, 0, 0, 0, 1, 0, 1, 1, 0}) +
                   mapChunk("WGHT", 1, "Soft", {{.point = 0, .numbers = {1}}}) + polygonsChunk("FACE", {{0, 1, 2}})));
    const nlohmann::json one = info(object)["objects"][0];
    EXPECT_EQ(one["parts"], (std::vector<std::string>{"Wheel"}));
    ASSERT_EQ(one["layers"].size(), 2U);
    EXPECT_EQ(one["layers"][0]["name"], "Body");
    EXPECT_EQ(one["layers"][0]["polygons"], 2);
    EXPECT_EQ(one["layers"][0]["maps"], nlohmann::json::parse(R"([{"type": "TXUV", "name": "Skin"}])"));
    EXPECT_EQ(one["layers"][1]["hidden"], true);
    EXPECT_EQ(one["layers"][1]["parent"], 0);
    EXPECT_FALSE(one["notes"].empty()) << "the hidden layer is not drawn";
    const std::string text = velm({"info", object}).out;
    for (const char *part : {"layer 0 \"Body\": 6 points, 2 polygons, maps TXUV \"Skin\"\n",
                             "layer 4 \"Spare\": 3 points, 1 polygons, hidden, child of layer 0, maps WGHT \"Soft\"\n",
                             "parts \"Wheel\"\n"})
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
}

TEST_F(AnyFile, InfoTellsTheNodesOfAnObject) {
    using test::chunk, test::cString, test::nodeBlocks;
    const std::string network =
        test::networkBlock(nodeBlocks("Surface", "Surface", "") + nodeBlocks("Weather", "Rain", ""), "");
    const std::string object = directory_.write(
        "small.lwo", test::triangleObject("Clay", chunk("SURF", cString("Clay") + cString("") + network)));
    const nlohmann::json json = info(object);
    EXPECT_EQ(json["kind"], "LWO");
    EXPECT_EQ(json["units"], "metres");
    const nlohmann::json &surface = json["surfaces"][0];
    EXPECT_EQ(surface["name"], "Clay");
    ASSERT_EQ(surface["nodes"].size(), 1U);
    EXPECT_EQ(surface["nodes"][0], nlohmann::json::parse(R"({"name": "Rain", "server": "Weather", "known": false})"));
}

} // namespace
} // namespace velm::host
