// "velm render --layer": the channels of EXR files beside the colours.
#include "host/image/file_pixels.h"
#include "host/image/picture_parts.h"
#include "tests/cli/command.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

// A tilted card before a wall of another surface; neither fills the picture. The camera, at z = -5, looks along Z. The
// wall's front is at z = 2, so its depth is 7.
constexpr const char *kCardAndWall = R"({
    "render": {"width": 64, "height": 48, "samples": 4},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {
        "Plain": {"settings": {"Color": [0.25, 0.5, 1], "Luminosity": 1, "Diffuse": 0}},
        "Painted": {
            "settings": {"Luminosity": 1, "Diffuse": 0},
            "nodes": {
                "Paint": {"server": "Constant Color", "settings": {"Color": [0.5, 0.25, 0.125]}},
                "Level": {"server": "Constant Scalar", "settings": {"Scalar": 3}}},
            "connections": ["Paint.Color -> Painted.Color"]}},
    "objects": {
        "Card": {"box": {"size": [1, 1, 0.1]}, "rotation": [20, 0, 30], "surface": "Plain"},
        "Wall": {"box": {"size": [4, 3, 2]}, "position": [0, 0, 3], "surface": "Painted"}}
})";

const std::vector<std::string> kAllLayers = {
    "--layer", "depth",   "--layer", "normal",      "--layer", "position",
    "--layer", "albedo",  "--layer", "object",      "--layer", "surface",
    "--layer", "samples", "--layer", "Paint.Color", "--layer", "Painted/Level.Scalar"};

class Layers : public testing::Test {
  protected:
    std::string file(const std::string &name) const { return directory_ / name; }

    test::Outcome render(const std::string &output, std::vector<std::string> more,
                         const std::vector<std::string> &layers = kAllLayers) const {
        std::vector<std::string> words{"render", scene_, "-o", file(output), "--quiet"};
        words.insert(words.end(), layers.begin(), layers.end());
        words.insert(words.end(), more.begin(), more.end());
        return test::velm(words);
    }

    FilePixels rendered(const std::string &output, const std::vector<std::string> &more) const {
        const test::Outcome outcome = render(output, more);
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return readFilePixels(file(output));
    }

    const TemporaryDirectory directory_;
    const std::string scene_ = directory_.write("scene.json", kCardAndWall);
};

// The values of a pixel by the names of channels.
class Values {
  public:
    Values(const FilePixels &picture, int x, int y) : picture_(picture), pixel_(picture.pixel(x, y)) {}
    float operator[](const std::string &channel) const {
        const int index = picture_.find(channel);
        EXPECT_GE(index, 0) << "no channel " << channel;
        return index < 0 ? 0 : pixel_[index];
    }

  private:
    const FilePixels &picture_;
    const float *pixel_;
};

// Both orders of evaluation, and half precision, which layers do not follow.
struct ManyLayers : Layers, testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(ManyLayers, HaveTheKnownValues) {
    const FilePixels picture = rendered("a.exr", GetParam());
    constexpr float kTolerance = 1e-5F;
    const Values wall(picture, 22, 16); // beside the card
    EXPECT_NEAR(wall["depth.Z"], 7, kTolerance);
    EXPECT_NEAR(wall["position.Z"], 2, kTolerance);
    EXPECT_NEAR(wall["normal.Z"], -1, kTolerance);
    EXPECT_NEAR(wall["normal.X"], 0, kTolerance);
    EXPECT_EQ(wall["albedo.R"], 0.5F);
    EXPECT_EQ(wall["albedo.B"], 0.125F);
    EXPECT_EQ(wall["object.id"], 2);
    EXPECT_EQ(wall["surface.id"], 2);
    EXPECT_EQ(wall["samples.count"], 4);
    EXPECT_EQ(wall["Paint.Color.G"], 0.25F);
    EXPECT_EQ(wall["Painted.Level.Scalar"], 3);

    const Values card(picture, 32, 24); // in the middle
    EXPECT_NEAR(card["depth.Z"] - 5, card["position.Z"], kTolerance);
    EXPECT_LT(card["depth.Z"], 5);
    // A heading of 20 degrees turns the normal by them about Y, and the bank about itself.
    EXPECT_NEAR(std::abs(card["normal.X"]), std::sin(20 * M_PI / 180), kTolerance);
    EXPECT_NEAR(card["normal.Y"], 0, kTolerance);
    EXPECT_EQ(card["albedo.G"], 0.5F);
    EXPECT_EQ(card["object.id"], 1);
    EXPECT_EQ(card["surface.id"], 1);
    EXPECT_EQ(card["Paint.Color.G"], 0); // its surface has no such node

    const Values nothing(picture, 0, 0);
    EXPECT_EQ(nothing["depth.Z"], 1e10F);
    for (const char *channel : {"position.Z", "normal.Z", "albedo.R", "object.id", "surface.id", "Paint.Color.R"})
        EXPECT_EQ(nothing[channel], 0) << channel;
    EXPECT_EQ(nothing["samples.count"], 4);
}

INSTANTIATE_TEST_SUITE_P(, ManyLayers,
                         testing::Values(std::vector<std::string>{}, std::vector<std::string>{"--order", "classic"},
                                         std::vector<std::string>{"--bits", "half", "--tiled"},
                                         std::vector<std::string>{"--threads", "2"}));

// Numbers are never mixed at edges, and are equal to the first sample; colours are means.
TEST_F(Layers, NumbersAreNotAveragedAtEdges) {
    const FilePixels picture = rendered("a.exr", {});
    bool hasMixedAlbedo = false;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Values pixel(picture, x, y);
            EXPECT_TRUE(pixel["object.id"] == 0 || pixel["object.id"] == 1 || pixel["object.id"] == 2);
            EXPECT_EQ(pixel["object.id"], pixel["surface.id"]);
            EXPECT_EQ(pixel["object.id"] == 0, pixel["depth.Z"] == 1e10F);
            const float red = pixel["albedo.R"];
            hasMixedAlbedo |= red != 0 && red != 0.25F && red != 0.5F;
        }
    }
    EXPECT_TRUE(hasMixedAlbedo);
}

TEST_F(Layers, LeaveThePictureAsItIs) {
    const FilePixels with = rendered("with.exr", {});
    ASSERT_EQ(render("without.exr", {}, {}).status, kExitDone);
    const FilePixels without = readFilePixels(file("without.exr"));
    ASSERT_EQ(without.channels.size(), 4U);
    for (int y = 0; y < with.height; ++y)
        for (int x = 0; x < with.width; ++x)
            for (const char *channel : {"R", "G", "B", "A"})
                EXPECT_EQ(Values(with, x, y)[channel], Values(without, x, y)[channel]);
}

struct LayersInParts : Layers, testing::WithParamInterface<std::string> {};

TEST_P(LayersInParts, AreMergedToThoseOfTheWholePicture) {
    std::vector<std::string> words{"merge", "-o", file("merged.exr")};
    for (const char *part : {"1/3", "2/3", "3/3"}) {
        const std::string name = std::string(1, part[0]) + ".exr";
        const test::Outcome outcome = render(name, {"--part", part, "--by", GetParam()});
        ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
        words.push_back(file(name));
    }
    const test::Outcome outcome = test::velm(words, false);
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    const PictureMetadata metadata = readPart(file("merged.exr")).metadata;
    EXPECT_EQ(metadata.objects, R"(["Card","Wall"])");
    EXPECT_EQ(metadata.surfaces, R"(["Plain","Painted"])");
    const FilePixels merged = readFilePixels(file("merged.exr")), whole = rendered("whole.exr", {});
    ASSERT_EQ(merged.channels, whole.channels);
    ASSERT_EQ(merged.values.size(), whole.values.size());
    for (std::size_t i = 0; i < whole.values.size(); ++i) // 1e-6: rounding of each part to 32 bits
        EXPECT_NEAR(merged.values[i], whole.values[i], 1e-6 * std::max(1.0F, std::abs(whole.values[i])));
}

INSTANTIATE_TEST_SUITE_P(, LayersInParts, testing::Values("tiles", "samples"));

TEST_F(Layers, PartsWithOtherLayersAreRefused) {
    ASSERT_EQ(render("1.exr", {"--part", "1/2"}, {"--layer", "depth"}).status, kExitDone);
    ASSERT_EQ(render("2.exr", {"--part", "2/2"}, {"--layer", "normal"}).status, kExitDone);
    const test::Outcome outcome = test::velm({"merge", file("1.exr"), file("2.exr"), "-o", file("a.exr")}, false);
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find("its list of layers is normal.X, normal.Y, normal.Z, not depth.Z"), std::string::npos)
        << outcome.err;
}

TEST_F(Layers, UnknownOnesListWhatThereIs) {
    const test::Outcome outcome = render("a.exr", {}, {"--layer", "AO.Scalar"});
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find("there is no layer \"AO.Scalar\"; there are depth, normal, position, albedo, object, "
                               "surface, samples, Paint.Color"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(directory_.names(), std::vector<std::string>{"scene.json"});
}

TEST_F(Layers, OnlyExrFilesHaveThem) {
    const test::Outcome outcome = render("a.png", {}, {"--layer", "depth"});
    EXPECT_EQ(outcome.status, kExitUsage);
    EXPECT_NE(outcome.err.find("--layer: only EXR files have layers; the output has to end in .exr"), std::string::npos)
        << outcome.err;
}

} // namespace
} // namespace velm::host
