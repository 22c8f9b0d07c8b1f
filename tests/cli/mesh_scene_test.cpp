// The commands with meshes that have cameras and lights of their own.
#include "host/base/error.h"
#include "host/image/file_pixels.h"
#include "host/io/files.h"
#include "tests/cli/command.h"
#include "tests/files/gltf_file.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace velm::host {
namespace {

using nlohmann::json;
using test::Outcome;

// The colour of the square where the lamp's light is 1: the neutral surface has a grey of 0.6.
constexpr float kLit = 0.6F;
constexpr float kTolerance = 0.005F; // the pixel at the centre shows a point close to the centre of the square

// A square, a lamp of that many candela at a distance of 3 m, and two cameras that look at the square.
std::string litSquare(int candela) {
    const std::string camera = R"({"type": "perspective", "perspective": {"yfov": 0.5, "znear": 0.1}})";
    return test::gltfSquare({R"({"name": "Front", "camera": 0, "translation": [0, 0, 4]})",
                             R"({"name": "Far", "camera": 1, "translation": [0, 0, 9]})",
                             R"({"name": "Lamp", "translation": [0, 0, 3], )" + test::gltfLight(0) + "}"},
                            camera + "," + camera,
                            R"({"type": "point", "intensity": )" + std::to_string(candela) + "}");
}

class MeshScene : public testing::Test {
  protected:
    Outcome render(const std::string &file, const std::vector<std::string> &options) const {
        std::vector<std::string> words = {"render", file,    "-o",        directory_ / "a.exr",
                                          "--size", "64x36", "--samples", "1"};
        words.insert(words.end(), options.begin(), options.end());
        return test::velm(words);
    }
    FilePixels picture(const std::string &file, const std::vector<std::string> &options = {}) const {
        const Outcome outcome = render(file, options);
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return readFilePixels(directory_ / "a.exr");
    }
    test::TemporaryDirectory directory_;
};

TEST_F(MeshScene, IsRenderedWithItsCameraAndItsLights) {
    const FilePixels front = picture(directory_.write("a.gltf", litSquare(9)));
    EXPECT_NEAR(front.pixel(32, 18)[0], kLit, kTolerance) << "9 cd / (3 m)^2 is 1";
    EXPECT_GT(front.pixel(20, 18)[0], 0.3F) << "the square";
    const FilePixels far = picture(directory_ / "a.gltf", {"--camera", "Far"});
    EXPECT_NEAR(far.pixel(32, 18)[0], kLit, kTolerance);
    EXPECT_LT(far.pixel(20, 18)[0], 0.2F) << "beside the square";
}

TEST_F(MeshScene, IsExposed) {
    const std::string file = directory_.write("a.gltf", litSquare(90000));
    EXPECT_NEAR(picture(file).pixel(32, 18)[0], kLit, kTolerance);
    EXPECT_NE(render(file, {}).err.find("an exposure (the intensities of lights times 0.0001)"), std::string::npos);
}

TEST_F(MeshScene, ListsItsCameras) {
    const Outcome outcome = render(directory_.write("a.gltf", litSquare(9)), {"--camera", "Side"});
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_NE(outcome.err.find("there is no camera \"Side\", there are \"Front\" and \"Far\""), std::string::npos)
        << outcome.err;
}

TEST_F(MeshScene, IsConvertedToTheSamePicture) {
    const std::string file = directory_.write("a.gltf", litSquare(90000));
    const FilePixels before = picture(file);
    ASSERT_EQ(test::velm({"convert", file, directory_ / "a.json"}, false).status, kExitDone);
    const json scene = json::parse(readFile(directory_ / "a.json"));
    EXPECT_TRUE(scene["cameras"].contains("Far"));
    EXPECT_EQ(scene["lights"]["Lamp"]["kind"], "point");
    EXPECT_EQ(picture(directory_ / "a.json").values, before.values);
}

// The intensity is that of the file, without the exposure that a render adds.
TEST_F(MeshScene, IsInTheInfo) {
    const std::string file = directory_.write("a.gltf", litSquare(90000));
    const std::string text = test::velm({"info", file}).out;
    EXPECT_NE(text.find("camera    \"Front\": at 0 0 -4, field of view "), std::string::npos) << text;
    EXPECT_NE(text.find("light     \"Lamp\": point, intensity 90000\n"), std::string::npos) << text;
    const json info = json::parse(test::velm({"info", file, "--json"}).out);
    EXPECT_EQ(info["cameras"][1]["name"], "Far");
    EXPECT_EQ(info["lights"][0]["intensity"], 90000);
}

TEST_F(MeshScene, ListsItsParts) {
    const std::string file = directory_.write("a.gltf", test::gltfSquare({R"({"name": "Lid", "mesh": 0})"}, "", ""));
    EXPECT_NE(test::velm({"info", file}).out.find("parts \"Square\", \"Lid\"\n"), std::string::npos);
    EXPECT_EQ(json::parse(test::velm({"info", file, "--json"}).out)["objects"][0]["parts"],
              (std::vector<std::string>{"Square", "Lid"}));
}

} // namespace
} // namespace velm::host
