// Complete renders of tiny scenes whose pixels are known.
#include "host/image/image.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace velm::host {
namespace {

namespace fs = std::filesystem;
using test::TemporaryDirectory;

// A wall that fills the picture and emits one colour.
constexpr const char *kGlowingWall = R"({
    "render": {"width": 8, "height": 6, "lastFrame": 1},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {"Glow": {
        "settings": {"Luminosity": 1, "Diffuse": 0},
        "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.25, 0.5, 1]}}},
        "connections": ["Paint.Color -> Glow.Color"]
    }},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Glow"}}
})";

// A wall that fills the picture, whose luminosity grows from 0 to 1 over frames 0 to 2 of one second each.
constexpr const char *kGrowingWall = R"({
    "render": {"width": 4, "height": 4, "firstFrame": 0, "lastFrame": 2, "framesPerSecond": 1},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {"Glow": {
        "settings": {"Color": [1, 1, 1], "Luminosity": 1, "Diffuse": 0},
        "nodes": {"Level": {"server": "Constant Scalar", "settings": {"Scalar": {"keys": [
            {"time": 0, "value": 0}, {"time": 2, "value": 1, "shape": "linear"}]}}}},
        "connections": ["Level.Scalar -> Glow.Luminosity"]
    }},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Glow"}}
})";

// The pixel in the middle, in linear light.
std::array<float, 3> middleOf(const std::string &file) {
    const auto image = readImage(file, "result");
    std::array<float, 3> colour{};
    pixel(image.get(), image->width / 2, image->height / 2, colour.data());
    return colour;
}

std::vector<std::string> filesIn(const fs::path &directory) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Render, WritesPngWithTheKnownColour) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("wall.json", kGlowingWall), file = directory / "new/wall.png";
    const test::Outcome outcome = test::velm({"render", scene, "-o", file});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    const auto image = readImage(file, "result");
    EXPECT_EQ(image->width, 8);
    EXPECT_EQ(image->height, 6);
    const auto colour = middleOf(file);
    constexpr float kEightBits = 0.005F; // half a step of sRGB at these levels, in linear light
    EXPECT_NEAR(colour[0], 0.25F, kEightBits);
    EXPECT_NEAR(colour[1], 0.5F, kEightBits);
    EXPECT_NEAR(colour[2], 1.0F, kEightBits);
    EXPECT_EQ(filesIn(directory / "new"), (std::vector<std::string>{"wall.png"}));
}

TEST(Render, WritesExrWithTheExactColour) {
    const TemporaryDirectory directory;
    const std::string file = directory / "wall.exr";
    ASSERT_EQ(test::velm({"render", directory.write("wall.json", kGlowingWall), "-o", file}).status, kExitDone);
    EXPECT_EQ(middleOf(file), (std::array<float, 3>{0.25F, 0.5F, 1.0F}));
}

TEST(Render, NamesTheSurfaceWhoseNodeRefusesTheFrame) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("wall.json", R"({"cameras": {"Main": {}},
"surfaces": {
  "Glow": {"nodes": {"Place": {"server": "Item Info", "settings": {"Item": "Nobody"}}},
           "connections": ["Place.Position -> Glow.Normal"]}}})");
    const test::Outcome outcome = test::velm({"render", scene, "-o", directory / "wall.png"});
    EXPECT_EQ(outcome.status, kExitInput) << outcome.err;
    EXPECT_NE(outcome.err.find(scene + ":3: surface \"Glow\": node \"Place\": the scene has no item"),
              std::string::npos)
        << outcome.err;
}

TEST(Render, TakesSizeAndRegionFromTheCommandLine) {
    const TemporaryDirectory directory;
    const std::string file = directory / "wall.hdr"; // an EXR file would have the region alone
    const test::Outcome outcome = test::velm({"render", directory.write("wall.json", kGlowingWall), "-o", file,
                                              "--size", "10x4", "--region", "0,0,5,4", "--quiet", "--samples", "2"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const auto image = readImage(file, "result");
    ASSERT_EQ(image->width, 10);
    float inside[3], outside[3];
    pixel(image.get(), 4, 3, inside);
    pixel(image.get(), 5, 0, outside);
    EXPECT_EQ(inside[2], 1.0F);
    EXPECT_EQ(outside[2], 0.0F);
}

TEST(Render, PrintsProgressInFewLinesAndStatisticsOnRequest) {
    const TemporaryDirectory directory;
    const test::Outcome outcome = test::velm({"render", directory.write("wall.json", kGlowingWall), "-o",
                                              directory / "wall.png", "--stats", "--threads", "1"});
    EXPECT_NE(outcome.err.find("frame 1: 100 %\n"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("wall.png, 8 x 6, in 0:00\n"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.out.find("camera rays                      48 "), std::string::npos) << outcome.out;
    for (const char *row : {"threads ", "triangles ", "cast rays ", "shaded rays ", "shadow rays ", "all rays ",
                            "preparation ", "rendering ", "peak memory "})
        EXPECT_NE(outcome.out.find(row), std::string::npos) << row;
}

TEST(Render, AnimatesSettingsOverFrames) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("grow.json", kGrowingWall);
    ASSERT_EQ(test::velm({"render", scene, "-o", directory / "g##.exr"}).status, kExitDone);
    EXPECT_EQ(filesIn(directory.path()), (std::vector<std::string>{"g00.exr", "g01.exr", "g02.exr", "grow.json"}));
    EXPECT_NEAR(middleOf(directory / "g00.exr")[0], 0, 1e-6);
    EXPECT_NEAR(middleOf(directory / "g01.exr")[0], 0.5, 1e-6);
    EXPECT_NEAR(middleOf(directory / "g02.exr")[0], 1, 1e-6);
}

TEST(Render, NumbersTheRequestedFrames) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("grow.json", kGrowingWall);
    ASSERT_EQ(test::velm({"render", scene, "-o", directory / "g.exr", "--frames", "1-2"}).status, kExitDone);
    ASSERT_EQ(test::velm({"render", scene, "-o", directory / "one.exr", "--frames", "1"}).status, kExitDone);
    EXPECT_EQ(filesIn(directory.path()),
              (std::vector<std::string>{"g_0001.exr", "g_0002.exr", "grow.json", "one.exr"}));
}

// The setting "Slot" is a popup of stored materials. Its entry "Gold" exists only once the node of a later surface has
// its setting "Name".
TEST(Render, AppliesSettingsThatDependOnLaterOnes) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("shared.json", R"({
        "render": {"width": 4, "height": 4},
        "cameras": {"Main": {"position": [0, 0, -5]}},
        "surfaces": {
            "Glow": {
                "settings": {"Luminosity": 1, "Diffuse": 0},
                "nodes": {"From": {"server": "Velm Get Material", "settings": {"Slot": "Gold"}}},
                "connections": ["From.Color -> Glow.Color"]
            },
            "Shelf": {
                "nodes": {"Store": {"server": "Velm Store Material", "settings": {"Name": "Gold"}},
                          "Paint": {"server": "Constant Color", "settings": {"Color": [1, 0.5, 0.125]}}},
                "connections": ["Paint.Color -> Store.Color"]
            }
        },
        "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Glow"}}
    })");
    const std::string file = directory / "shared.exr";
    const test::Outcome outcome = test::velm({"render", scene, "-o", file});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(middleOf(file), (std::array<float, 3>{1.0F, 0.5F, 0.125F}));
}

TEST(Render, ProvidesNodesWithTheScenesFramesWhateverFramesAreRendered) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("info.json", R"({
        "render": {"width": 4, "height": 4, "recursionDepth": 5, "lastFrame": 9},
        "cameras": {"Main": {"position": [0, 0, -5]}},
        "surfaces": {"Glow": {
            "settings": {"Diffuse": 0, "Luminosity": 1},
            "nodes": {"Info": {"server": "Velm Render Info"}, "Join": {"server": "Make Color"}},
            "connections": ["Info.End Frame -> Join.Red", "Info.Current Frame -> Join.Green",
                            "Info.Ray Recursion Limit -> Join.Blue", "Join.Color -> Glow.Color"]
        }},
        "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Glow"}}
    })");
    const test::Outcome outcome =
        test::velm({"render", scene, "-o", directory / "#.exr", "--frames", "2-3", "--threads", "2"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(middleOf(directory / "2.exr"), (std::array<float, 3>{9.0F, 2.0F, 5.0F}));
    EXPECT_EQ(middleOf(directory / "3.exr"), (std::array<float, 3>{9.0F, 3.0F, 5.0F}));
}

struct RenderMistake {
    const char *name;
    std::string scene;
    std::vector<std::string> words;
    int status;
    const char *message; // a part of it; SCENE stands for the scene file's name
};

std::string withNodeSettings(const std::string &settings) {
    return "{\"cameras\": {\"Main\": {}},\n\"surfaces\": {\"S\": {\"nodes\": {\n\"C\": {\"server\": \"Checker\", "
           "\"settings\": {\n" +
           settings + "}}}}}}";
}

class WrongRender : public testing::TestWithParam<RenderMistake> {};

TEST_P(WrongRender, EndsWithItsStatusAndWritesNoFile) {
    const RenderMistake &wrong = GetParam();
    const TemporaryDirectory directory;
    const std::string scene = directory.write("scene.json", wrong.scene);
    std::vector<std::string> words{"render", scene};
    words.insert(words.end(), wrong.words.begin(), wrong.words.end());
    if (std::ranges::find(words, "-o") == words.end()) words.insert(words.end(), {"-o", directory / "result.png"});
    const test::Outcome outcome = test::velm(words);
    EXPECT_EQ(outcome.status, wrong.status) << outcome.err;
    std::string message = wrong.message;
    if (const auto at = message.find("SCENE"); at != std::string::npos) message.replace(at, 5, scene);
    EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    EXPECT_TRUE(outcome.err.starts_with("velm: ")) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_EQ(filesIn(directory.path()), (std::vector<std::string>{"scene.json"}));
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongRender,
    testing::Values(
        RenderMistake{"NoJson", "{", {}, kExitInput, "velm: SCENE:1: "},
        RenderMistake{
            "UnknownKey", "{\n\"camera\": {}}", {}, kExitInput, "SCENE:2: a scene has no key \"camera\", did you mean"},
        RenderMistake{
            "UnknownNode",
            "{\"cameras\": {\"Main\": {}},\n\"surfaces\": {\"S\": {\"nodes\": {\n\"C\": {\"server\": \"Chequer\"}}}}}",
            {},
            kExitInput,
            "SCENE:3: no node \"Chequer\", did you mean \"Checker\"?"},
        RenderMistake{"UnknownSetting", withNodeSettings("\"Sise\": 1"), {}, kExitInput, "did you mean \"Size\"?"},
        RenderMistake{"SettingsLine", withNodeSettings("\"Sise\": 1"), {}, kExitInput, "velm: SCENE:4: "},
        RenderMistake{"WrongKind", withNodeSettings("\"Size\": \"big\""), {}, kExitInput, "velm: SCENE:4: "},
        RenderMistake{"UnknownEntry", withNodeSettings("\"Coordinates\": \"Wrld\""), {}, kExitInput, "\"World\""},
        RenderMistake{
            "UnknownOutput",
            "{\"cameras\": {\"Main\": {}}, \"surfaces\": {\"S\": {\"nodes\": {\"C\": {\"server\": \"Checker\"}},\n"
            "\"connections\": [\n\"C.Colour -> S.Color\"]}}}",
            {},
            kExitInput,
            "SCENE:3: "},
        RenderMistake{"UnknownRootSetting",
                      "{\"cameras\": {\"Main\": {}},\n\"surfaces\": {\"S\": {\"settings\": {\"Colour\": [1, 1, 1]}}}}",
                      {},
                      kExitInput,
                      "did you mean \"Color\"?"},
        RenderMistake{"RegionOutside",
                      kGlowingWall,
                      {"--region", "0,0,9,6"},
                      kExitUsage,
                      "--region: the region ends at 9,6, outside the picture of 8x6"},
        RenderMistake{"UnknownEnding", kGlowingWall, {"-o", "picture.bmp7"}, kExitUsage, "bmp7"},
        RenderMistake{"OutputIsADirectory", kGlowingWall, {"-o", "/tmp"}, kExitUsage, "/tmp"},
        RenderMistake{"NameTooLong", // reported before anything is rendered
                      kGlowingWall,
                      {"-o", "/tmp/" + std::string(250, 'x') + ".png"},
                      kExitMachine,
                      ".png\": File name too long"},
        RenderMistake{"NameOfTheLastFrameTooLong",
                      kGlowingWall,
                      {"-o", "/tmp/" + std::string(243, 'x') + "#.png", "--frames", "9-10"},
                      kExitMachine,
                      "10.png\": File name too long"},
        RenderMistake{"NoDirectoryPossible", kGlowingWall, {"-o", "/dev/null/a.png"}, kExitMachine, "/dev/null/a.png"}),
    [](const auto &row) { return row.param.name; });

// Anything but a regular file under the picture's name is an error, before anything is rendered.
TEST(Render, ReplacesOnlyRegularFiles) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("wall.json", kGrowingWall);
    ASSERT_EQ(mkfifo((directory / "a_0001.png").c_str(), 0600), 0);
    const test::Outcome outcome = test::velm({"render", scene, "-o", directory / "a.png"});
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_EQ(outcome.err,
              "velm: cannot write \"" + (directory / "a_0001.png") + "\": it is a pipe (see velm --help)\n");
    EXPECT_EQ(filesIn(directory.path()), (std::vector<std::string>{"a_0001.png", "wall.json"}));
    EXPECT_TRUE(fs::is_fifo(directory / "a_0001.png"));
}

// A picture must not replace an image of the scene, as it would if the scene and its image had the same name: pictures
// are named after the scene.
TEST(Render, ReplacesNoImageThatItReads) {
    const TemporaryDirectory directory;
    std::string text = kGlowingWall;
    text.insert(text.find('{') + 1, R"("images": {"Sky": {"file": "wall.png"}},)");
    const std::string scene = directory.write("wall.json", text), file = directory.write("wall.png", "the image");
    const std::string link = directory / "link.png";
    fs::create_symlink("wall.png", link);
    for (const std::string &output : {file, link, directory / "./wall.png"}) {
        const test::Outcome outcome = test::velm({"render", scene, "-o", output});
        EXPECT_EQ(outcome.status, kExitUsage);
        EXPECT_EQ(outcome.err,
                  "velm: cannot write \"" + output + "\": it is read, as \"" + file + "\" (see velm --help)\n");
        EXPECT_EQ(fs::file_size(file), 9U);
    }
}

TEST(Render, AMissingSceneIsAnInputError) {
    const test::Outcome outcome = test::velm({"render", "/nowhere/scene.json"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find("/nowhere/scene.json"), std::string::npos) << outcome.err;
}

// Limits the size of files while it lives. Writing beyond the limit fails as on a full disk.
class FullDisk {
  public:
    FullDisk() {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit small = before_;
        small.rlim_cur = 64;
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, SIG_DFL);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

  private:
    rlimit before_{};
};

TEST(Render, AFullDiskLeavesTheOldPictureUnchanged) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("wall.json", kGlowingWall), file = directory.write("wall.exr", "old");
    test::Outcome outcome{};
    {
        const FullDisk full;
        outcome = test::velm({"render", scene, "-o", file, "--quiet"});
    }
    EXPECT_EQ(outcome.status, kExitMachine) << outcome.err;
    EXPECT_EQ(filesIn(directory.path()), (std::vector<std::string>{"wall.exr", "wall.json"}));
    std::ifstream stream(file);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "old");
}

// Raises SIGINT, as Ctrl-C does, when the first progress is printed.
class InterruptingBuffer : public std::stringbuf {
  public:
    int sync() override {
        if (!raised_ && str().find('%') != std::string::npos) {
            raised_ = true;
            std::raise(SIGINT);
        }
        return std::stringbuf::sync();
    }

  private:
    bool raised_ = false;
};

TEST(Render, AnInterruptLeavesNoPicture) {
    const TemporaryDirectory directory;
    const std::string scene = directory.write("wall.json", kGlowingWall);
    InterruptingBuffer buffer;
    std::ostream errors(&buffer);
    const test::Outcome outcome =
        test::velm({"render", scene, "-o", directory / "wall.png", "--size", "200x200"}, true, &errors);
    EXPECT_EQ(outcome.status, kExitInterrupted);
    EXPECT_TRUE(buffer.str().ends_with("is not written\n")) << buffer.str();
    EXPECT_EQ(filesIn(directory.path()), (std::vector<std::string>{"wall.json"}));
}

} // namespace
} // namespace velm::host
