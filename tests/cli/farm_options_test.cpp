// The options of "velm render" that render farms use, by renders of tiny scenes.
#include "host/image/image.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <array>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>

namespace velm::host {
namespace {

namespace fs = std::filesystem;
using test::TemporaryDirectory;

// A wall that fills the picture, whose brightness is a node's setting.
constexpr const char *kWall = R"({
    "render": {"width": 4, "height": 4, "lastFrame": 6, "frameStep": 2},
    "cameras": {"Main": {"position": [0, 0, -5]}, "Away": {"position": [0, 0, -5], "rotation": [180, 0, 0]}},
    "surfaces": {"Glow": {
        "settings": {"Luminosity": 1, "Diffuse": 0},
        "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.25, 0.5, 1]}}},
        "connections": ["Paint.Color -> Glow.Color"]
    }},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Glow"}}
})";

class FarmOptions : public testing::Test {
  protected:
    TemporaryDirectory directory_;
    std::string scene_ = directory_.write("wall.json", kWall);

    std::string file(const std::string &name) const { return directory_ / name; }
    test::Outcome render(const std::string &output, std::vector<std::string> more = {}) const {
        std::vector<std::string> words{"render", scene_, "-o", file(output), "--threads", "1"};
        words.insert(words.end(), more.begin(), more.end());
        return test::velm(words);
    }
    std::string read(const std::string &name) const {
        std::ifstream stream(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::array<float, 3> colourOf(const std::string &name) const {
        const auto image = readImage(file(name), "result");
        std::array<float, 3> colour{};
        pixel(image.get(), 1, 1, colour.data());
        return colour;
    }
    std::vector<std::string> pictures() const {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(directory_.path()))
            if (entry.path().extension() == ".exr") names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(FarmOptions, FramesAreAListWithTheScenesStep) {
    const test::Outcome outcome = render("f#.exr", {"--frames", "9,1-4,6-7x1"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(pictures(), (std::vector<std::string>{"f1.exr", "f3.exr", "f6.exr", "f7.exr", "f9.exr"}));
    EXPECT_LT(outcome.err.find("f9.exr"), outcome.err.find("f1.exr")) << "in the order given";
}

TEST_F(FarmOptions, SetReplacesValuesAndSettings) {
    const test::Outcome outcome =
        render("wall.exr", {"--set", "render.width=7", "--set",
                            "surfaces.Glow.nodes.Paint.settings.Color=[0.5,0.5,0.25]", "--frames", "1"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(colourOf("wall.exr"), (std::array<float, 3>{0.5F, 0.5F, 0.25F}));
    EXPECT_EQ(readImage(file("wall.exr"), "result")->width, 7);
}

TEST_F(FarmOptions, WrongOverridesAreUsageErrors) {
    struct Row {
        const char *text, *message;
    };
    const Row rows[] = {
        {"render.wdith=7", "velm: --set render.wdith=7: \"render\" has no key \"wdith\", did you mean \"width\"?"},
        {"surfaces.Glow.nodes.Piant.settings.Color=[1,1,1]", "did you mean \"Paint\"?"},
        {"surfaces.Glow.nodes.Paint.settings.Colour=[1,1,1]",
         "velm: --set surfaces.Glow.nodes.Paint.settings.Colour=[1,1,1]: there is no setting \"Colour\", did you mean "
         "\"Color\"?"},
        {"surfaces.Glow.nodes.Paint.server=Velm Nothing",
         "velm: --set surfaces.Glow.nodes.Paint.server=Velm Nothing: "},
    };
    for (const Row &row : rows) {
        const test::Outcome outcome = render("wall.exr", {"--frames", "1", "--set", row.text});
        EXPECT_EQ(outcome.status, kExitUsage) << outcome.err;
        EXPECT_NE(outcome.err.find(row.message), std::string::npos) << outcome.err;
        EXPECT_TRUE(pictures().empty());
    }
}

TEST_F(FarmOptions, CameraSelectsOneOfTheScene) {
    ASSERT_EQ(render("away.exr", {"--frames", "1", "--camera", "Away"}).status, kExitDone);
    EXPECT_EQ(colourOf("away.exr"), (std::array<float, 3>{0, 0, 0}));
    const test::Outcome outcome = render("wall.exr", {"--camera", "Mian"});
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_EQ(outcome.err, "velm: --camera: there is no camera \"Mian\", did you mean \"Main\"? (see velm --help)\n");
}

// HDR files hold no digest: any file under the name counts.
TEST_F(FarmOptions, SkipExistingRendersWhatIsMissing) {
    directory_.write("f1.hdr", "an earlier picture");
    const test::Outcome outcome = render("f#.hdr", {"--skip-existing"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(read("f1.hdr"), "an earlier picture");
    for (const char *name : {"f3.hdr", "f5.hdr"}) EXPECT_FALSE(read(name).empty());
    EXPECT_NE(outcome.err.find("f1.hdr exists; frame 1 is not rendered\n"), std::string::npos) << outcome.err;
}

TEST_F(FarmOptions, SkipExistingDoesNotEvenLoadTheModuleWhenAllIsDone) {
    for (const char *name : {"f1.hdr", "f3.hdr", "f5.hdr"}) directory_.write(name, "an earlier picture");
    const test::Outcome outcome =
        test::velm({"render", scene_, "-o", file("f#.hdr"), "--skip-existing", "--module", "/nowhere/velm.p"}, false);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
}

TEST_F(FarmOptions, TimeLimitEndsWithStatusThree) {
    const test::Outcome outcome = render("f#.exr", {"--time-limit", "0.000001"});
    EXPECT_EQ(outcome.status, kExitMachine);
    EXPECT_EQ(outcome.err, "velm: the time limit of 1e-06 s has passed; frames written: 0\n");
    EXPECT_TRUE(pictures().empty());
}

TEST_F(FarmOptions, ProgressForSchedulersGoesWhereTheyReadIt) {
    const test::Outcome openJd = render("a.exr", {"--frames", "1", "--progress", "openjd"});
    EXPECT_TRUE(openJd.out.ends_with("openjd_progress: 100\n")) << openJd.out;
    EXPECT_EQ(openJd.err.find("progress"), std::string::npos) << openJd.err;
    const test::Outcome percent = render("a.exr", {"--frames", "1", "--progress", "percent"});
    EXPECT_NE(percent.err.find("Progress: 100%\n"), std::string::npos) << percent.err;
    EXPECT_EQ(percent.out, "");
    EXPECT_EQ(render("a.exr", {"--frames", "1", "--progress", "none"}).err, "");
}

TEST_F(FarmOptions, LogHasALineForEachEvent) {
    ASSERT_EQ(render("f#.exr", {"--frames", "1,3", "--log", file("r.log")}).status, kExitDone);
    EXPECT_EQ(render("g#.exr", {"--frames", "1", "--log", file("r.log"), "--data", "/", "--set",
                                "surfaces.Glow.nodes.Paint.server=Velm Nothing"})
                  .status,
              kExitUsage);
    EXPECT_EQ(test::velm({"render", scene_, "-o", file("g.exr"), "--frames", "1", "--log", file("r.log"), "--module",
                          "/nowhere/velm.p"},
                         false)
                  .status,
              kExitInput);
    std::istringstream lines(read("r.log"));
    const std::regex form(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z  (info   |warning|error  ) +\d+\.\d MiB  .+)");
    std::vector<std::string> levels;
    std::string all;
    for (std::string line; std::getline(lines, line); all += line + '\n') {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, form)) << line;
        levels.push_back(match.str(1));
    }
    EXPECT_EQ(levels.size(), 7U + 1U + 2U) << all;
    for (const char *part : {"velm render ", "prepared: ", "frame 1 (1 of 2) begins", "frame 3: ", " written in ",
                             "done: frames written: 2, not rendered: 0; peak memory "})
        EXPECT_NE(all.find(part), std::string::npos) << part << " is not in\n" << all;
    EXPECT_EQ(levels.back(), "error  ");
    EXPECT_TRUE(all.ends_with("; status 1\n")) << all;
}

TEST_F(FarmOptions, LogsAreNeverAppendedToOtherFiles) {
    for (const std::string &log : {scene_, file("f1.exr"), file("./f1.exr")}) {
        const test::Outcome outcome = render("f#.exr", {"--frames", "1", "--log", log});
        EXPECT_EQ(outcome.status, kExitUsage) << log << outcome.err;
        EXPECT_EQ(read("wall.json"), kWall);
    }
    const test::Outcome outcome = render("f#.exr", {"--log", file("nowhere/r.log")});
    EXPECT_EQ(outcome.status, kExitMachine);
    EXPECT_NE(outcome.err.find("cannot write the log"), std::string::npos) << outcome.err;
}

TEST_F(FarmOptions, StatisticsAreJsonOnRequest) {
    const test::Outcome outcome = render("a.exr", {"--frames", "1", "--stats", "--json"});
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["frames"], 1);
    EXPECT_EQ(json["rays"]["camera"], 16);
    EXPECT_GT(json["bytes"]["peakMemory"], 1000000);
    EXPECT_GE(json["seconds"]["rendering"], 0);
}

} // namespace
} // namespace velm::host
