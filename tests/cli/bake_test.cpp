// "velm bake": what it writes, and its errors.
#include "host/cli/bake_options.h"
#include "host/image/file_pixels.h"
#include "tests/cli/command.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace velm::host {
namespace {

using test::Outcome;

// A floor under half a roof, with occlusion by random rays, and a ball.
constexpr const char *kScene = R"({
    "render": {"width": 8, "height": 8, "samples": 1},
    "cameras": {"Main": {"position": [0, 2, -6], "target": [0, 0, 0]}},
    "lights": {"Key": {"kind": "distant", "position": [0, 5, 0]}},
    "objects": {"Floor": {"plane": {"width": 4, "depth": 4}, "surface": "Ground"},
                "Roof": {"plane": {"width": 2, "depth": 4}, "position": [-1, 1, 0], "surface": "Plain"},
                "Ball": {"sphere": {"radius": 0.5}, "position": [1, 0.5, 0], "surface": "Plain"}},
    "surfaces": {
        "Ground": {"settings": {"Color": [0.5, 0.25, 0], "Diffuse": 1, "Luminosity": 0.5},
                   "nodes": {"AO": {"server": "Velm Ambient Occlusion", "settings": {"Mode": "Random", "Samples": 8}}},
                   "connections": ["AO.Scalar -> Ground.Specular"]},
        "Plain": {"settings": {"Diffuse": 1}}}})";

class BakeCommand : public testing::Test {
  protected:
    test::TemporaryDirectory directory_;
    std::string scene_ = directory_.write("room.json", kScene);

    std::string file(const std::string &name) const { return directory_ / name; }
    Outcome bake(std::vector<std::string> options) const {
        options.insert(options.begin(), {"bake", scene_, "--size", "32"});
        if (std::ranges::count(options, "--threads") == 0) options.insert(options.end(), {"--threads", "1"});
        return test::velm(options);
    }
    // Of the floor; has to succeed.
    FilePixels picture(const std::string &output, const std::string &name,
                       std::vector<std::string> options = {}) const {
        options.insert(options.end(), {"--object", "Floor", "--output", output, "-o", file(name)});
        const Outcome outcome = bake(options);
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return readFilePixels(file(name));
    }
    std::string bytes(const std::string &name) const {
        std::ifstream stream(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // Fails with this status and a message in one line that contains the text; writes nothing.
    void expectRefusal(std::vector<std::string> options, int status, const std::string &text) const {
        options.insert(options.end(), {"-o", file("no.png")});
        const Outcome outcome = bake(options);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_NE(outcome.err.find(text), std::string::npos) << outcome.err;
        EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << outcome.err;
        EXPECT_FALSE(std::filesystem::exists(file("no.png")));
    }
};

TEST_F(BakeCommand, WritesColoursAsPicturesDo) {
    const FilePixels floats = picture("Color", "colour.exr");
    EXPECT_EQ(floats.width, 32);
    EXPECT_EQ(floats.height, 32);
    const float *const texel = floats.pixel(3, 4);
    EXPECT_EQ(texel[floats.find("R")], 0.5F);
    EXPECT_EQ(texel[floats.find("G")], 0.25F);
    EXPECT_EQ(texel[floats.find("A")], 1);
    // By the sRGB curve.
    EXPECT_NEAR(picture("Color", "colour.png").pixel(3, 4)[0], 188.0 / 255, 1e-6);
}

TEST_F(BakeCommand, WritesNumbersAndNormalsWithoutACurve) {
    EXPECT_NEAR(picture("Luminosity", "numbers.png").pixel(3, 4)[0], 128.0 / 255, 1e-6);
    const FilePixels normals = picture("Normal", "normals.png");
    EXPECT_NEAR(normals.pixel(3, 4)[0], 128.0 / 255, 1e-6);
    EXPECT_NEAR(normals.pixel(3, 4)[2], 1, 1e-6);
    const FilePixels world = picture("Normal", "normals.exr", {"--space", "world"});
    EXPECT_EQ(world.pixel(3, 4)[world.find("G")], 1);
    EXPECT_EQ(world.pixel(3, 4)[world.find("B")], 0);
}

TEST_F(BakeCommand, BakesAnOutputOfANode) {
    const FilePixels occlusion = picture("AO.Scalar", "ao.exr", {"--samples", "16"});
    const int red = occlusion.find("R");
    EXPECT_LT(occlusion.pixel(8, 16)[red], occlusion.pixel(31, 1)[red]); // under the roof it is darker
}

TEST_F(BakeCommand, IsTheSameForAnyNumberOfWorkersAndTheSecondTime) {
    picture("AO.Color", "first.exr", {"--seed", "3"});
    for (const char *const workers : {"1", "2", "3"}) {
        picture("AO.Color", "again.exr", {"--seed", "3", "--threads", workers});
        EXPECT_EQ(bytes("again.exr"), bytes("first.exr")) << workers;
    }
    picture("AO.Color", "other.exr", {"--seed", "4"});
    const FilePixels one = readFilePixels(file("first.exr")), other = readFilePixels(file("other.exr"));
    EXPECT_FALSE(std::ranges::equal(one.values, other.values));
}

TEST_F(BakeCommand, NumbersTheFilesOfFrames) {
    EXPECT_EQ(bake({"--object", "Ball", "--output", "Color", "-o", file("b.png"), "--frames", "3,5"}).status,
              kExitDone);
    EXPECT_TRUE(std::filesystem::exists(file("b_0003.png")));
    EXPECT_TRUE(std::filesystem::exists(file("b_0005.png")));
}

TEST_F(BakeCommand, PrintsStatistics) {
    const Outcome outcome = bake({"--object", "Ball", "--output", "lit", "-o", file("b.png"), "--stats", "--quiet"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.out.find("shadow"), std::string::npos) << outcome.out;
}

TEST_F(BakeCommand, NeedsAnOutputAndAFile) {
    EXPECT_EQ(bake({"-o", file("no.png")}).status, kExitUsage);
    EXPECT_EQ(bake({"--output", "Color", "--object", "Ball"}).status, kExitUsage);
}

TEST_F(BakeCommand, ListsWhatThereIsForWrongNames) {
    expectRefusal(
        {"--output", "Color"}, kExitUsage,
        "--object: the scene has several objects; one has to be named; there are \"Floor\", \"Roof\", \"Ball\"");
    expectRefusal({"--output", "Color", "--object", "Lawn"}, kExitUsage,
                  "--object: there is no object \"Lawn\"; there are");
    expectRefusal({"--output", "Color", "--object", "Floor", "--surface", "Plain"}, kExitUsage,
                  "--surface: the object \"Floor\" has no surface \"Plain\"; there is \"Ground\"");
    expectRefusal({"--output", "Color", "--object", "Floor", "--uv", "Atlas"}, kExitUsage,
                  "--uv: the object \"Floor\" has no UV map \"Atlas\"; there is \"UV\"");
    expectRefusal({"--output", "AO.Colour", "--object", "Floor"}, kExitUsage,
                  "--output: there is no output \"AO.Colour\", did you mean \"AO.Color\"? there are \"Color\"");
    expectRefusal({"--output", "Color", "--object", "Floor", "--from-direction", "Kay"}, kExitUsage,
                  "--from-direction: points cannot be seen from \"Kay\"");
}

TEST_F(BakeCommand, RefusesWrongOptions) {
    const std::vector<std::string> floor = {"--object", "Floor", "--output", "Color"};
    const auto with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), floor.begin(), floor.end());
        return more;
    };
    expectRefusal(with({"--space", "object"}), kExitUsage, "--space: only normals have coordinates");
    expectRefusal(with({"--margin", "-1"}), kExitUsage, "--margin");
    expectRefusal(with({"--samples", "0"}), kExitUsage, "--samples");
    EXPECT_EQ(bake({"--object", "Floor", "--output", "Color", "-o", file("a.gif")}).status, kExitUsage);
}

TEST_F(BakeCommand, NeedsAUvMap) {
    directory_.write("bare.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const Outcome outcome = test::velm({"bake", file("bare.obj"), "--output", "Color", "-o", file("no.png")});
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_NE(outcome.err.find("has no UV map"), std::string::npos) << outcome.err;
}

TEST_F(BakeCommand, WarnsAndFailsOnWarningsIfStrict) {
    directory_.write("half.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 2 0\nvt 0 2\nf 1/1 2/2 3/3\n");
    const std::vector<std::string> words = {"bake", file("half.obj"), "--output", "Normal",
                                            "-o",   file("half.png"), "--size",   "16"};
    const Outcome outcome = test::velm(words);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.err.find("1 triangle with coordinates outside 0 to 1"), std::string::npos) << outcome.err;
    std::filesystem::remove(file("half.png"));
    std::vector<std::string> strict = words;
    strict.emplace_back("--strict");
    EXPECT_EQ(test::velm(strict).status, kExitInput);
    EXPECT_FALSE(std::filesystem::exists(file("half.png")));
}

TEST(BakeSize, IsASideOrTwo) {
    EXPECT_EQ(parseBakeSize("2048").height, 2048);
    EXPECT_EQ(parseBakeSize("64x32").height, 32);
    for (const char *text : {"", "0", "64x", "ax2", "99999"}) EXPECT_THROW(parseBakeSize(text), UsageError) << text;
}

} // namespace
} // namespace velm::host
