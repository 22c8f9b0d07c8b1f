// The level of subdivision surfaces, as commands set it.
#include "host/image/file_pixels.h"
#include "host/io/files.h"
#include "tests/cli/command.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velm::host {
namespace {

using test::Outcome;

// 24 patches; of Debian's package assimp-testmodels.
constexpr const char *kPatches = "/usr/share/assimp/models/LWO/LWO2/Subdivision.lwo";

class Subdivided : public testing::Test {
  protected:
    static Outcome run(std::vector<std::string> words, const std::vector<std::string> &options) {
        words.insert(words.end(), options.begin(), options.end());
        return test::velm(words);
    }
    static int polygonsOf(const std::string &file, const std::vector<std::string> &options = {}) {
        const Outcome outcome = run({"info", file, "--json"}, options);
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return nlohmann::json::parse(outcome.out)["objects"][0]["polygons"];
    }
    Outcome render(const std::string &file, const std::string &picture, const std::vector<std::string> &options = {}) {
        return run({"render", file, "-o", directory_ / picture, "--size", "32x18", "--samples", "1"}, options);
    }

    const test::TemporaryDirectory directory_;
};

TEST_F(Subdivided, InfoCountsThePolygonsOfALevel) {
    EXPECT_EQ(polygonsOf(kPatches), 24 * 16);
    EXPECT_EQ(polygonsOf(kPatches, {"--subdivision", "0"}), 24);
    EXPECT_EQ(polygonsOf(kPatches, {"--subdivision", "3"}), 24 * 64);
    EXPECT_EQ(test::velm({"info", kPatches, "--subdivision", "9"}).status, kExitUsage);
}

TEST_F(Subdivided, RenderDrawsTheLevelWithoutAWarning) {
    const Outcome outcome = render(kPatches, "a.png", {"--strict"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    const auto isSkipped = [&](const std::vector<std::string> &options) {
        return render(kPatches, "a.png", options).err.find("exists") != std::string::npos;
    };
    EXPECT_TRUE(isSkipped({"--skip-existing"}));
    EXPECT_FALSE(isSkipped({"--skip-existing", "--subdivision", "0"})) << "another picture";
}

TEST_F(Subdivided, TheOptionReplacesTheLevelOfAScene) {
    const std::string scene = directory_.write("scene.json", std::string(R"({"cameras": {"Main": {}}, "objects": {
        "Patches": {"mesh": {"subdivision": 1, "file": ")") + kPatches +
                                                                 R"("}}}})");
    EXPECT_EQ(polygonsOf(scene), 24 * 4);
    EXPECT_EQ(polygonsOf(scene, {"--subdivision", "3"}), 24 * 64);
}

TEST_F(Subdivided, ConvertWritesTheLevel) {
    const std::string output = directory_ / "out.json";
    ASSERT_EQ(test::velm({"convert", kPatches, output, "--subdivision", "1"}, false).status, kExitDone);
    EXPECT_EQ(nlohmann::json::parse(readFile(output))["objects"]["Subdivision"]["mesh"]["subdivision"], 1);
    ASSERT_EQ(render(output, "a.exr").status, kExitDone);
    ASSERT_EQ(render(kPatches, "b.exr", {"--subdivision", "1"}).status, kExitDone);
    EXPECT_EQ(readFilePixels(directory_ / "a.exr").values, readFilePixels(directory_ / "b.exr").values);
}

TEST_F(Subdivided, ALevelThatTakesTooMuchMemoryIsAnError) {
    const Outcome outcome = render(kPatches, "a.png", {"--subdivision", "8", "--read-memory", "256"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find("Subdivision.lwo: the object's subdivision surfaces have 1572864 polygons at level 8"),
              std::string::npos)
        << outcome.err;
}

} // namespace
} // namespace velm::host
