// A scene renders to the same bytes every time: in a new process and in one that has rendered before, with any number
// of workers, and each frame by itself. A picture and its header contain nothing that could differ, such as the time.
#include "tests/cli/command.h"
#include "tests/cli/example_names.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velm::host {
namespace {

namespace fs = std::filesystem;
using test::TemporaryDirectory;

std::string bytesOf(const fs::path &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The demonstration scene, with its ambient occlusion changed to random rays.
std::string demonstration() {
    std::string text = bytesOf(VELM_SOURCE_DIR "/examples/occlusion.json");
    const std::string polar = R"("Mode": "Polar")", random = R"("Mode": "Random")";
    std::size_t changed = 0, at = 0;
    while ((at = text.find(polar)) != std::string::npos) {
        text.replace(at, polar.size(), random);
        ++changed;
    }
    EXPECT_EQ(changed, 2U);
    return text;
}

// A scene of a ball in a box; the parameters are the contents of their two surfaces.
std::string ballInBox(const std::string &ball, const std::string &wall) {
    return R"({"cameras": {"Main": {"position": [0, 0.5, -4], "target": [0, 0, 0]}},
               "backdrop": {"kind": "gradient"},
               "objects": {"Ball": {"sphere": {"segments": 24}, "surface": "Ball"},
                           "Wall": {"box": {"size": [12, 12, 12], "inward": true}, "surface": "Wall"}},
               "surfaces": {"Ball": {"settings": {"Luminosity": 1, "Diffuse": 0}, )" +
           ball + R"(}, "Wall": {"settings": {"Luminosity": 1, "Diffuse": 0}, )" + wall + "}}}";
}

// The contents of the surface "Wall": its colour is the mean of several random numbers.
std::string noisyWall() {
    return R"("nodes": {"R": {"server": "Velm Random"}, "Join": {"server": "Make Color"},
                        "T": {"server": "Velm Take Samples", "settings": {"Samples": 4}}},
              "connections": ["R.Out -> Join.Red", "Join.Color -> T.Color", "T.Color -> Wall.Color"])";
}

// The contents of the surface "Ball" with blurred reflections or refractions. `kind`: "Reflection" or "Refraction".
std::string blurred(const std::string &kind) {
    return R"("nodes": {"G": {"server": "Velm Gaussian )" + kind + R"(s", "settings": {")" + kind +
           R"( Blur": 30, "Samples": 4}}}, "connections": ["G.Color -> Ball.Color"])";
}

struct Scene {
    const char *name;
    std::string (*text)();
};

const Scene kScenes[] = {
    {.name = "Occlusion", .text = demonstration},
    {.name = "Reflections", .text = [] { return ballInBox(blurred("Reflection"), noisyWall()); }},
    {.name = "Refractions", .text = [] { return ballInBox(blurred("Refraction"), noisyWall()); }},
};

// Runs the program in a process of its own. Returns its exit status; -1 if it could not run or was ended by a signal.
int spawnVelm(const std::vector<std::string> &words) {
    std::vector<std::string> all = {VELM_PROGRAM};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char *> arguments;
    for (std::string &word : all) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, VELM_PROGRAM, nullptr, nullptr, arguments.data(), environ) != 0) return -1;
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

class SameBytes : public testing::TestWithParam<Scene> {
  protected:
    // The pictures have the same names every time, since their headers contain the command line.
    std::vector<std::string> words(const char *ending, const char *frames = "1-2", const char *threads = "1") const {
        return {"render",   scene_,  "-o",        directory_ / (std::string("#") + ending),
                "--size",   "80x45", "--samples", "2",
                "--frames", frames,  "--threads", threads,
                "--quiet"};
    }
    // Returns the bytes of the two frames, one after the other, and removes their files.
    std::string takeFrames(const char *ending) const {
        const fs::path first = directory_ / (std::string("1") + ending);
        const fs::path second = directory_ / (std::string("2") + ending);
        const std::string one = bytesOf(first), two = bytesOf(second);
        EXPECT_FALSE(one.empty());
        EXPECT_NE(one, two) << "the frames use no random numbers";
        fs::remove(first);
        fs::remove(second);
        return one + two;
    }

    const TemporaryDirectory directory_;
    const std::string scene_ = directory_.write("scene.json", GetParam().text());
};

TEST_P(SameBytes, InProcessesOfTheirOwn) {
    for (const char *ending : {".exr", ".png"}) {
        ASSERT_EQ(spawnVelm(words(ending)), kExitDone);
        const std::string before = takeFrames(ending);
        ASSERT_EQ(spawnVelm(words(ending)), kExitDone);
        EXPECT_TRUE(takeFrames(ending) == before) << ending;
    }
}

TEST_P(SameBytes, InOneProcess) {
    for (const char *ending : {".exr", ".png"}) {
        const test::Outcome first = test::velm(words(ending));
        ASSERT_EQ(first.status, kExitDone) << first.err;
        const std::string before = takeFrames(ending);
        const test::Outcome second = test::velm(words(ending));
        ASSERT_EQ(second.status, kExitDone) << second.err;
        EXPECT_TRUE(takeFrames(ending) == before) << ending;
    }
}

TEST_P(SameBytes, WithAnyNumberOfWorkers) {
    ASSERT_EQ(test::velm(words(".exr")).status, kExitDone);
    const std::string one = takeFrames(".exr");
    for (const char *threads : {"2", "3", "16", "32"}) {
        const test::Outcome outcome = test::velm(words(".exr", "1-2", threads));
        ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
        EXPECT_TRUE(takeFrames(".exr") == one) << threads;
    }
}

TEST_P(SameBytes, FrameByFrame) {
    ASSERT_EQ(test::velm(words(".exr")).status, kExitDone);
    const std::string together = takeFrames(".exr");
    ASSERT_EQ(test::velm(words(".exr", "2")).status, kExitDone);
    ASSERT_EQ(test::velm(words(".exr", "1")).status, kExitDone);
    EXPECT_TRUE(takeFrames(".exr") == together);
}

INSTANTIATE_TEST_SUITE_P(All, SameBytes, testing::ValuesIn(kScenes),
                         [](const auto &scene) { return scene.param.name; });

class SameBytesOfExample : public testing::TestWithParam<std::string> {};

TEST_P(SameBytesOfExample, WithAnyNumberOfWorkers) {
    const TemporaryDirectory directory;
    const std::string file = directory / "a.exr";
    std::string one;
    for (const char *threads : {"1", "2", "3", "16", "32"}) {
        const test::Outcome outcome =
            test::velm({"render", test::exampleFile(GetParam()), "-o", file, "--size", "96x54", "--samples", "1",
                        "--frames", "1", "--order", "repeatable", "--threads", threads, "--quiet"});
        ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
        const std::string bytes = bytesOf(file);
        ASSERT_FALSE(bytes.empty());
        if (one.empty()) one = bytes;
        EXPECT_TRUE(bytes == one) << threads;
    }
}

INSTANTIATE_TEST_SUITE_P(All, SameBytesOfExample, testing::ValuesIn(test::exampleNames()),
                         [](const auto &name) { return name.param; });

} // namespace
} // namespace velm::host
