// "velm farm". Whether engines accept the jobs is tested by ./run test --farm.
#include "host/cli/farm_job.h"
#include "host/cli/farm_templates.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

constexpr const char *kWalk = R"({"render": {"firstFrame": 2, "lastFrame": 11, "frameStep": 3},
                                  "cameras": {"Main": {}}, "surfaces": {}, "objects": {}})";

class Farms : public testing::Test {
  protected:
    TemporaryDirectory directory_;
    std::string scene_ = directory_.write("it's a walk.json", kWalk);

    test::Outcome farm(std::vector<std::string> more) const {
        std::vector<std::string> words{"farm", scene_};
        words.insert(words.end(), more.begin(), more.end());
        return test::velm(words, false);
    }
    // The job; fails the test where it lacks one of the parts.
    void expectParts(const std::vector<std::string> &words, const std::vector<std::string> &parts) const {
        const test::Outcome outcome = farm(words);
        ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
        for (const std::string &part : parts)
            EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\nis not in\n" << outcome.out;
    }
};

TEST_F(Farms, PrintTheScenesFramesForSlurm) {
    const std::string quoted = shellQuoted(scene_);
    expectParts({"--engine", "slurm", "-o", "/out/f_####.exr"},
                {"#!/bin/bash\n#SBATCH ",
                 "\nscene=" + quoted + "\npicture='/out/f_####.exr'\nframes=(2 5 8 11)\noptions=()\n",
                 "exec sbatch --array="});
}

TEST_F(Farms, DivideFramesIntoChunks) {
    expectParts({"--engine", "slurm", "--frames", "1-10x1,30", "--chunk", "4"}, {"\nframes=(1-4:1 5-8:1 9,10,30)\n"});
    expectParts({"--engine", "parallel", "--frames", "1-10", "--chunk", "4"}, {"\nframes=(1-10)\n"});
    expectParts({"--engine", "openjd", "--frames", "1-10x1,30", "--chunk", "4"},
                {"type: STRING\n          range: [\"1-4:1\",\"5-8:1\",\"9,10,30\"]\n"});
    expectParts({"--engine", "openjd", "--frames", "1-10"}, {"default: \"1-10:3\"\n", "type: INT\n"});
}

TEST_F(Farms, PrintAStillInParts) {
    expectParts({"--engine", "slurm", "--parts", "6"}, {"it'\\''s a walk.exr'\nparts=6\n", "--dependency=\"afterany:"});
    expectParts({"--engine", "parallel", "--parts", "6"}, {"\nparts=6\n", "--expect \"$parts\""});
    expectParts({"--engine", "openjd", "--parts", "6", "-o", "/out/still.exr"},
                {"    default: 6\n", "    default: \"/out\"\n", "    default: \"still.exr\"\n", "dependsOn: Render"});
}

TEST_F(Farms, PassFurtherOptionsOn) {
    for (const char *engine : {"slurm", "parallel"})
        expectParts({"--engine", engine, "--data", "/tmp", "--", "--samples", "16", "--set", "a.b=c d"},
                    {"\noptions=(--data /tmp --samples 16 --set 'a.b=c d')\n"});
    expectParts({"--engine", "openjd", "--", "--samples", "16"},
                {"            - openjd\n            - \"--samples\"\n            - \"16\"\n          timeout"});
}

TEST_F(Farms, RefuseWhatCannotBeRendered) {
    struct Row {
        std::vector<std::string> words;
        const char *message;
    };
    const Row rows[] = {
        {{}, "--engine is required"},
        {{"--engine", "slurmy"}, "there is no engine \"slurmy\", did you mean \"slurm\"?"},
        {{"--engine", "slurm", "--parts", "0"}, "--parts"},
        {{"--engine", "slurm", "--parts", "4", "-o", "a.png"}, "\"a.png\" is no .exr file"},
        {{"--engine", "slurm", "--parts", "4", "--frames", "1-3"}, "excludes"},
        {{"--engine", "slurm", "--frames", "3-1"}, "comes before"},
        {{"--engine", "slurm", "-o", "a.txt"}, "a.txt"},
    };
    for (const Row &row : rows) {
        const test::Outcome outcome = farm(row.words);
        EXPECT_EQ(outcome.status, kExitUsage) << outcome.err;
        EXPECT_NE(outcome.err.find(row.message), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(FarmTemplates, AreThoseOfThePackage) {
    std::vector<std::string_view> names;
    for (const EmbeddedText &one : farmTemplates()) names.push_back(one.name);
    EXPECT_EQ(names, (std::vector<std::string_view>{"velm-frames.sbatch", "velm-frames.sh", "velm-frames.yaml",
                                                    "velm-still.sbatch", "velm-still.sh", "velm-still.yaml"}));
}

} // namespace
} // namespace velm::host
