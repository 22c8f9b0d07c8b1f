#include "host/cli/command_line.h"
#include "host/cli/render_options.h"

#include "tests/cli/command.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

CommandLine parse(std::vector<const char *> words) {
    words.insert(words.begin(), "velm");
    std::ostringstream out;
    return parseCommandLine(static_cast<int>(words.size()), words.data(), out).value();
}

const RenderOptions &renderOptions(const CommandLine &line) {
    return *std::any_cast<const std::shared_ptr<RenderOptions> &>(line.record);
}

TEST(Options, HaveDefaults) {
    const CommandLine line = parse({"render", "a.json"});
    EXPECT_TRUE(line.program.module.ends_with("/velm.p")) << line.program.module;
    const RenderOptions &render = renderOptions(line);
    EXPECT_EQ(render.scene, "a.json");
    EXPECT_EQ(render.output, "");
    EXPECT_FALSE(render.frames || render.size || render.region);
    EXPECT_EQ(render.samples, 0);
    EXPECT_EQ(render.threads, 0);
    EXPECT_FALSE(render.strict || render.quiet || render.stats);
}

TEST(Options, OfRenderAreAllParsed) {
    const CommandLine line = parse({"render",
                                    "a.json",
                                    "-o",
                                    "b.exr",
                                    "--frames",
                                    "3-7",
                                    "--size",
                                    "320x200",
                                    "--samples",
                                    "9",
                                    "--threads",
                                    "16",
                                    "--region",
                                    "1,2,30,40",
                                    "--stats",
                                    "--json",
                                    "--skip-existing",
                                    "--time-limit",
                                    "90",
                                    "--camera",
                                    "Top",
                                    "--progress",
                                    "percent",
                                    "--set",
                                    "render.samples=4",
                                    "--set",
                                    "backdrop.colour=[1,0,0]",
                                    "--log",
                                    "r.log",
                                    "--strict",
                                    "--data",
                                    "/tmp",
                                    "--data",
                                    "/",
                                    "--module",
                                    "m.p"});
    const RenderOptions &render = renderOptions(line);
    EXPECT_EQ(line.program.module, "m.p");
    EXPECT_EQ(render.output, "b.exr");
    EXPECT_EQ(render.frames->frames(1), (std::vector<int>{3, 4, 5, 6, 7}));
    EXPECT_TRUE(render.skipExisting && render.json);
    EXPECT_EQ(render.timeLimit, 90);
    EXPECT_EQ(render.camera, "Top");
    EXPECT_EQ(render.progress, ProgressStyle::percent);
    EXPECT_EQ(render.overrides.size(), 2U);
    EXPECT_EQ(line.program.log, "r.log");
    EXPECT_EQ(render.size->width, 320);
    EXPECT_EQ(render.size->height, 200);
    EXPECT_EQ(render.samples, 9);
    EXPECT_EQ(render.threads, 16);
    EXPECT_EQ(render.region->left, 1);
    EXPECT_EQ(render.region->top, 2);
    EXPECT_EQ(render.region->right, 30);
    EXPECT_EQ(render.region->bottom, 40);
    EXPECT_TRUE(render.strict && render.stats);
    EXPECT_EQ(render.data, (std::vector<std::string>{"/tmp", "/"}));
    ASSERT_GT(line.program.words.size(), 3U);
    EXPECT_EQ(line.program.words[0], "render");
    EXPECT_EQ(line.program.words[1], "a.json");
    EXPECT_EQ(line.program.words[2], "-o");
}

TEST(Options, OfRenderMayChooseTheViewAndTheLights) {
    const CommandLine line = parse({"render", "a.lwo", "--view", "threequarter", "--rig", "outdoor"});
    EXPECT_EQ(renderOptions(line).view, View::threeQuarter);
    EXPECT_EQ(renderOptions(line).rig, Rig::outdoor);
    const CommandLine none = parse({"render", "a.lwo"});
    EXPECT_FALSE(renderOptions(none).view || renderOptions(none).rig);
}

TEST(Options, OfRenderMayChooseTheFilter) {
    const CommandLine line = parse({"render", "a.json", "--filter", "blackman-harris", "--filter-width", "2.5"});
    EXPECT_EQ(renderOptions(line).filter, FilterShape::blackmanHarris);
    EXPECT_EQ(renderOptions(line).filterWidth, 2.5);
    const CommandLine none = parse({"render", "a.json"});
    EXPECT_FALSE(renderOptions(none).filter || renderOptions(none).filterWidth);
}

TEST(Options, OfRenderMayChooseTheLevelOfSubdivision) {
    EXPECT_EQ(renderOptions(parse({"render", "a.lwo", "--subdivision", "0"})).subdivision, 0);
    EXPECT_FALSE(renderOptions(parse({"render", "a.lwo"})).subdivision);
    EXPECT_THROW(parse({"render", "a.lwo", "--subdivision", "9"}), UsageError);
}

TEST(Options, TheModuleMayPrecedeTheCommand) {
    EXPECT_EQ(parse({"--module", "m.p", "nodes", "--all"}).program.module, "m.p");
    EXPECT_EQ(parse({"show", "--module", "m.p", "Velm Counter"}).program.module, "m.p");
}

struct WrongWords {
    const char *name;
    std::vector<std::string> words;
    const char *message; // a part of it
};

class WrongCommandLine : public testing::TestWithParam<WrongWords> {};

TEST_P(WrongCommandLine, IsReportedInOneLine) {
    const test::Outcome outcome = test::velm(GetParam().words, false);
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("velm: ")) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().message), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

std::vector<std::string> render(const std::vector<std::string> &more) {
    std::vector<std::string> words{"render", "a.json"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongCommandLine,
    testing::Values(
        WrongWords{"NoCommand", {}, "a command is needed: nodes, show, render"},
        WrongWords{"UnknownCommand", {"rendre"}, "there is no command \"rendre\", did you mean \"render\"?"},
        WrongWords{"OptionWithoutCommand", {"--everything"}, "there is no option --everything"},
        WrongWords{"ModuleWithoutFile", {"--module"}, "--module"},
        WrongWords{"UnknownOption", {"nodes", "--everything"}, "there is no option --everything (see"},
        WrongWords{"MisspeltOption", render({"--sise", "4x4"}), "no option --sise, did you mean \"--size\"?"},
        WrongWords{"MisspeltOptionWithValue", render({"--treads=4"}), "did you mean \"--threads\"?"},
        WrongWords{"NoNumber", render({"--call-limit", "nan"}),
                   "--call-limit: \"nan\" is not a number from 0 to 1000000"},
        WrongWords{"NegativeNumber", render({"--call-limit", "-1"}), "\"-1\" is not a number from 0"},
        WrongWords{"LineBreak", {"a\nb"}, "there is no command \"a\\nb\""},
        WrongWords{"ShowWithoutNode", {"show"}, "NODE is required"},
        WrongWords{"RenderWithoutScene", {"render"}, "FILE is required"},
        WrongWords{"TwoScenes", render({"b.json"}), "b.json"},
        WrongWords{"SizeZero", render({"--size", "0x0"}), "--size: 0 is not from 1 to 32768"},
        WrongWords{"SizeHuge", render({"--size", "10x99999"}), "--size: 99999 is not from 1 to 32768"},
        WrongWords{"SizeText", render({"--size", "640"}), "--size: \"640\" is no size such as 960x540"},
        WrongWords{"SizeTail", render({"--size", "640x480x3"}), "is no size"},
        WrongWords{"ManyThreads", render({"--threads", "1025"}), "--threads"},
        WrongWords{"NoThreads", render({"--threads", "0"}), "--threads"},
        WrongWords{"NoSamples", render({"--samples", "0"}), "--samples"},
        WrongWords{"SamplesText", render({"--samples", "many"}), "--samples"},
        WrongWords{"RegionOfThree", render({"--region", "0,0,5"}), "--region: \"0,0,5\" is no region"},
        WrongWords{"RegionEmpty", render({"--region", "5,0,5,9"}), "is empty"},
        WrongWords{"RegionOutside", render({"--region", "-1,0,5,9"}), "starts outside the picture"},
        WrongWords{"FramesBackwards", render({"--frames", "5-3"}),
                   "--frames: the last frame, 3, comes before the first, 5"},
        WrongWords{"FramesText", render({"--frames", "all"}), "--frames: \"all\" is neither"},
        WrongWords{"FramesHuge", render({"--frames", "1-9999999"}), "numbered from -999999 to 999999"},
        WrongWords{"FramesTail", render({"--frames", "1-9x2,b"}), "\"b\" is neither a frame nor a range such as"},
        WrongWords{"FilterText", render({"--filter", "sinc"}),
                   "--filter: \"sinc\" is none of box, gaussian, blackman-harris"},
        WrongWords{"FilterTooNarrow", render({"--filter-width", "0"}), "\"0\" is not a number from 0.1 to 16"},
        WrongWords{"QuietProgress", render({"--quiet", "--progress", "bar"}), "--quiet excludes --progress"},
        WrongWords{"ProgressText", render({"--progress", "dots"}),
                   "--progress: \"dots\" is none of bar, percent, openjd, none"},
        WrongWords{"JsonWithoutStatistics", render({"--json"}), "--json requires --stats"},
        WrongWords{"SetWithoutValue", render({"--set", "render.samples"}),
                   "--set: \"render.samples\" is not a path and a value"},
        WrongWords{"SetEmptyPart", render({"--set", "render..samples=3"}), "has an empty part (character 8)"},
        WrongWords{"SetNoJson", render({"--set", "render.samples=3x"}),
                   "the value of \"render.samples=3x\" is not JSON"},
        WrongWords{"TimeLimitBelowZero", render({"--time-limit", "-1"}), "\"-1\" is not a number from 0"},
        WrongWords{"DataNotThere", render({"--data", "/nowhere"}), "/nowhere"}),
    [](const auto &row) { return row.param.name; });

TEST(Help, IsAvailableForEveryCommand) {
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"--help"}, {"nodes", "--help"}, {"show", "--help"}, {"render", "--help"}}) {
        const test::Outcome outcome = test::velm(words, false);
        EXPECT_EQ(outcome.status, kExitDone) << words[0];
        EXPECT_EQ(outcome.err, "") << words[0];
        EXPECT_NE(outcome.out.find("Usage: velm"), std::string::npos) << outcome.out;
    }
    const std::string help = test::velm({"render", "--help"}, false).out;
    for (const char *option : {"--output", "--frames", "--size", "--region", "--samples", "--threads", "--data",
                               "--quiet", "--stats", "--module"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

TEST(Version, IsAvailableForEveryCommand) {
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"--version"}, {"nodes", "--version"}, {"render", "--version"}}) {
        const test::Outcome outcome = test::velm(words, false);
        EXPECT_EQ(outcome.status, kExitDone) << words[0];
        EXPECT_TRUE(outcome.out.starts_with("velm ")) << outcome.out << outcome.err;
    }
}

} // namespace
} // namespace velm::host
