// Renders of scenes in which something is missing: the warnings, the picture, and --strict.
#include "host/image/image.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <array>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

// A wall in front of a backdrop, both with the image "Wood". The wall emits the image's colour or, without the image,
// the node's background colour.
std::string wallWith(const std::string &file) {
    return R"({"render": {"width": 4, "height": 4}, "cameras": {"Main": {"position": [0, 0, -5]}},
"images": {
"Wood": {"file": ")" +
           file + R"("}},
"backdrop": {"kind": "image", "image": "Wood"},
"surfaces": {"Glow": {
    "settings": {"Luminosity": 1, "Diffuse": 0},
    "nodes": {"Pixel": {"server": "Velm Pixel Image", "settings": {"Bg Color": [0.25, 0.5, 1],
        "Image": "Wood"}}},
    "connections": ["Pixel.Color -> Glow.Color"]
}},
"objects": {"Wall": {"box": {"size": [20, 1, 1]}, "surface": "Glow"}}})";
}

std::array<float, 3> colourAt(const std::string &file, int x, int y) {
    const auto image = readImage(file, "result");
    std::array<float, 3> colour{};
    pixel(image.get(), x, y, colour.data());
    return colour;
}

constexpr std::array<float, 3> kBackground = {0.25F, 0.5F, 1.0F}, kBlack = {0, 0, 0};

struct AbsentCase {
    const char *name;
    std::string contents; // of the image's file; empty: there is none
    std::string why;      // a part of the message
};
class AbsentImage : public testing::TestWithParam<AbsentCase> {};

TEST_P(AbsentImage, IsReportedAtOnceAndAtTheEndAndLeftOut) {
    const TemporaryDirectory directory;
    if (!GetParam().contents.empty()) directory.write("wood.hdr", GetParam().contents);
    const std::string scene = directory.write("scene.json", wallWith("wood.hdr")), file = directory / "a.exr";
    const test::Outcome outcome = test::velm({"render", scene, "-o", file, "--quiet", "--threads", "1"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    const std::string warning = "velm: warning: " + scene;
    for (const std::string &line :
         {warning + ":3: images.Wood.file: ", warning + ":4: backdrop.image: the image \"Wood\"",
          warning + ":8: surfaces.Glow.nodes.Pixel.settings.Image: the image \"Wood\""})
        EXPECT_NE(outcome.err.find(line), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().why), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("\nvelm: 1 warning: no image \"Wood\" ("), std::string::npos) << outcome.err;
    EXPECT_TRUE(outcome.err.ends_with("wood.hdr)\n")) << outcome.err;
    EXPECT_EQ(colourAt(file, 2, 2), kBackground);
    EXPECT_EQ(colourAt(file, 2, 0), kBlack);
}

TEST_P(AbsentImage, IsAnErrorWithoutAPictureWhenStrict) {
    const TemporaryDirectory directory;
    if (!GetParam().contents.empty()) directory.write("wood.hdr", GetParam().contents);
    const std::string scene = directory.write("scene.json", wallWith("wood.hdr")), file = directory / "a.exr";
    const test::Outcome outcome = test::velm({"render", scene, "-o", file, "--strict"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_TRUE(outcome.err.starts_with("velm: " + scene + ":3: images.Wood.file: ")) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().why), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(file));
}

INSTANTIATE_TEST_SUITE_P(
    All, AbsentImage,
    testing::Values(AbsentCase{"Missing", "", "there is no file \"wood.hdr\"; looked in "},
                    AbsentCase{"NoImage", "wood", "wood.hdr: cannot read the image: "},
                    AbsentCase{"CutOff", test::redHdr("-Y 4 +X 4"), "wood.hdr: cannot read the image: "},
                    AbsentCase{"Empty", test::redHdr("-Y 0 +X 0"), "wood.hdr: cannot read the image: "},
                    AbsentCase{"Huge", test::redHdr("-Y 100000 +X 100000"), "4096 MiB of memory (see --read-memory)"}),
    [](const auto &one) { return one.param.name; });

TEST(StrictRender, OfAGoodSceneIsTheSame) {
    const TemporaryDirectory directory;
    directory.write("wood.hdr", test::redHdr("-Y 1 +X 1"));
    const std::string scene = directory.write("scene.json", wallWith("wood.hdr")), file = directory / "a.exr";
    const test::Outcome outcome = test::velm({"render", scene, "-o", file, "--quiet", "--strict"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(colourAt(file, 2, 2), (std::array<float, 3>{1, 0, 0}));
}

constexpr const char *kMeshScene = R"({"render": {"width": 4, "height": 4}, "cameras": {"Main": {}},
"objects": {
"M": {"mesh": {"file": "a.ply"}, "surface": "Clay"}}, "surfaces": {"Clay": {}}})";

// The mesh library never returns from this file.
TEST(ReadLimitOptions, EndTheReadingOfAMeshWithAnError) {
    const TemporaryDirectory directory;
    const std::string mesh = directory.write("a.ply", "ply\nformat ascii 1.0\nelement 100000000 1\nend_header\n0\n");
    const std::string scene = directory.write("scene.json", kMeshScene), file = directory / "a.exr";
    const test::Outcome outcome = test::velm({"render", scene, "-o", file, "--read-time", "0.25", "--quiet"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_EQ(outcome.err, "velm: " + scene + ":3: object \"M\": " + mesh +
                               ": cannot read the mesh: it takes longer than 0.25 s (see --read-time)\n");
    EXPECT_FALSE(std::filesystem::exists(file));
}

// Images are gone without, in all commands that read them but compare.
TEST(ReadLimitOptions, HoldForImages) {
    const TemporaryDirectory directory;
    const std::string image = directory.write("wood.hdr", test::redHdr("-Y 2000 +X 2000"));
    const std::string scene = directory.write("scene.json", wallWith("wood.hdr")), file = directory / "a.exr";
    const std::string why = image + ": cannot read the image: its size of 2000 by 2000 pixels with 3 channels needs "
                                    "more than 16 MiB of memory (see --read-memory)";
    const std::vector<std::string> words = {"render", scene, "-o", file, "--read-memory", "16", "--quiet"};
    const test::Outcome render = test::velm(words);
    EXPECT_EQ(render.status, kExitDone);
    EXPECT_NE(render.err.find("velm: warning: " + scene + ":3: images.Wood.file: " + why), std::string::npos)
        << render.err;
    const test::Outcome compare = test::velm({"compare", image, image, "--read-memory", "16"}, false);
    EXPECT_EQ(compare.status, kCompareFailed);
    EXPECT_EQ(compare.err,
              "velm: " + image + ": cannot read the image: it needs more than 16 MiB of memory (see --read-memory)\n");
}

TEST(ReadLimitOptions, HaveLimits) {
    for (const auto &[option, value] :
         {std::pair{"--read-memory", "1"}, {"--read-memory", "many"}, {"--read-time", "-1"}, {"--read-time", "nan"}})
        EXPECT_EQ(test::velm({"render", "scene.json", option, value}).status, kExitUsage) << option << ' ' << value;
}

// A Store node whose input comes from the Get node that reads the store. Evaluating them is circular, but the network
// has no circle of connections.
constexpr const char *kCircle = R"({
    "render": {"width": 4, "height": 4, "lastFrame": 2}, "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {"Glow": {
        "settings": {"Luminosity": 1, "Diffuse": 0},
        "nodes": {"Store": {"server": "Velm Store Material", "settings": {"Name": "Gold"}},
                  "Get": {"server": "Velm Get Material", "settings": {"Slot": "Gold"}}},
        "connections": ["Get.Color -> Store.Color", "Get.Color -> Glow.Color"]
    }},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Glow"}}
})";

TEST(CircularEvaluation, IsReportedOnceAndSummarised) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("scene.json", kCircle);
    const test::Outcome outcome = test::velm({"render", scene, "-o", directory / "#.exr", "--quiet"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.err,
              "velm: warning: " + scene +
                  ": nodes evaluate each other in a circle, perhaps through a material store; the inputs at "
                  "which it was cut count as unconnected\n"
                  "velm: 1 warning: nodes that evaluate each other in a circle\n");
    EXPECT_TRUE(std::filesystem::exists(directory / "2.exr"));
}

TEST(CircularEvaluation, IsAnErrorWhenStrict) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("scene.json", kCircle);
    const test::Outcome outcome = test::velm({"render", scene, "-o", directory / "#.exr", "--quiet", "--strict"});
    EXPECT_EQ(outcome.status, kExitInput) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("velm: " + scene + ": nodes evaluate each other in a circle")) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(directory / "1.exr"));
    // The next render is not affected.
    const std::string good = directory.write("good.json", wallWith("none.hdr"));
    EXPECT_EQ(test::velm({"render", good, "-o", directory / "a.exr"}).err.find("circle"), std::string::npos);
}

} // namespace
} // namespace velm::host
