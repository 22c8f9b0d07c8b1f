// How "velm render" and "velm merge" store pictures: --alpha, --bits, --compression and --tiled.
#include "host/image/file_pixels.h"
#include "tests/cli/command.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

// A glowing card with slanting edges before a bright backdrop; parts of both are in the picture.
constexpr const char *kCard = R"({
    "render": {"width": 48, "height": 40, "samples": 4},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "backdrop": {"kind": "plain", "colour": [0.9, 0.1, 0.8]},
    "surfaces": {"Glow": {"settings": {"Color": [0.25, 0.5, 1], "Luminosity": 1, "Diffuse": 0}}},
    "objects": {"Card": {"box": {"size": [2, 2, 0.1]}, "rotation": [0, 0, 20], "surface": "Glow"}}
})";

class PictureFiles : public testing::Test {
  protected:
    std::string file(const std::string &name) const { return directory_ / name; }

    test::Outcome render(const std::string &output, const std::vector<std::string> &more) const {
        std::vector<std::string> words{"render", scene_, "-o", file(output), "--quiet"};
        words.insert(words.end(), more.begin(), more.end());
        return test::velm(words);
    }

    void expectUsageError(const std::string &output, const std::vector<std::string> &more,
                          const std::string &message) const {
        const test::Outcome outcome = render(output, more);
        EXPECT_EQ(outcome.status, kExitUsage) << output;
        EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    }

    const TemporaryDirectory directory_;
    const std::string scene_ = directory_.write("scene.json", kCard);
};

// What a picture with straight alpha shows: pixels of the card, of nothing, and of the card's edge.
struct Census {
    int opaque = 0, clear = 0, edge = 0;
};

// Every pixel that shows the card at all has the card's colour.
Census countStraight(const FilePixels &picture) {
    constexpr float kCardColour[] = {0.5370987F, 0.7353570F, 1}; // by the sRGB curve, of 0.25, 0.5 and 1
    constexpr float kHalfStep = 0.51F / 65535;
    Census census;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const float *const pixel = picture.pixel(x, y);
            ++(pixel[3] == 1 ? census.opaque : pixel[3] == 0 ? census.clear : census.edge);
            for (int i = 0; i < 3; ++i) EXPECT_NEAR(pixel[i], pixel[3] > 0 ? kCardColour[i] : 0, kHalfStep);
        }
    }
    return census;
}

TEST_F(PictureFiles, StraightAlphaLeavesTheBackdropOut) {
    ASSERT_EQ(render("a.png", {"--alpha", "--bits", "16"}).status, kExitDone);
    const FilePixels picture = readFilePixels(file("a.png"));
    ASSERT_EQ(picture.channels.size(), 4U);
    const Census census = countStraight(picture);
    EXPECT_GT(census.opaque, 100);
    EXPECT_GT(census.clear, 100);
    EXPECT_GT(census.edge, 20);
}

TEST_F(PictureFiles, AssociatedAlphaLeavesTheBackdropOut) {
    ASSERT_EQ(render("a.exr", {"--alpha"}).status, kExitDone);
    const FilePixels picture = readFilePixels(file("a.exr"));
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) EXPECT_FLOAT_EQ(picture.pixel(x, y)[1], 0.5F * picture.pixel(x, y)[3]);
}

// The card's light of 0.25 is shown as 0.5, which is 188 of 255.
TEST_F(PictureFiles, ExposureBrightensThePicture) {
    ASSERT_EQ(render("a.png", {"--exposure", "1"}).status, kExitDone);
    EXPECT_FLOAT_EQ(readFilePixels(file("a.png")).pixel(24, 20)[0] * 255, 188);
}

TEST_F(PictureFiles, MergedPartsKeepTheirAlpha) {
    std::vector<std::string> words{"merge", "-o", file("merged.png"), "--bits", "16"};
    for (const char *number : {"1", "2"}) {
        const std::string part = std::string(number) + ".exr";
        ASSERT_EQ(render(part, {"--alpha", "--part", std::string(number) + "/2", "--by", "samples"}).status, kExitDone);
        words.push_back(file(part));
    }
    const test::Outcome outcome = test::velm(words, false);
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    ASSERT_EQ(render("whole.png", {"--alpha", "--bits", "16"}).status, kExitDone);
    EXPECT_EQ(readFilePixels(file("merged.png")).values, readFilePixels(file("whole.png")).values);
}

TEST_F(PictureFiles, AnExistingPictureWithOtherSettingsIsRenderedAgain) {
    ASSERT_EQ(render("a.png", {}).status, kExitDone);
    EXPECT_NE(test::velm({"render", scene_, "-o", file("a.png"), "--skip-existing"}).err.find("not rendered"),
              std::string::npos);
    for (const std::vector<std::string> &more :
         std::vector<std::vector<std::string>>{{"--alpha"}, {"--bits", "16"}, {}}) {
        std::vector<std::string> words{"render", scene_, "-o", file("a.png"), "--skip-existing"};
        words.insert(words.end(), more.begin(), more.end());
        const test::Outcome outcome = test::velm(words);
        EXPECT_EQ(outcome.status, kExitDone);
        EXPECT_EQ(outcome.err.find("not rendered"), std::string::npos) << outcome.err;
    }
}

TEST_F(PictureFiles, WhatAFormatDoesNotHaveIsAUsageError) {
    expectUsageError("a.jpg", {"--alpha"}, "--alpha: .jpg files have no alpha; PNG, TIFF and EXR files can have it");
    expectUsageError("a.png", {"--bits", "half"}, "--bits: .png files cannot have half, only 8, 16");
    expectUsageError("a.tif", {"--bits", "half"}, "--bits: .tif files cannot have half, only 8, 16, float");
    expectUsageError("a.exr", {"--bits", "16"}, "--bits: .exr files cannot have 16, only half, float");
    expectUsageError("a.hdr", {"--bits", "float"}, "--bits: .hdr files leave no choice");
    expectUsageError("a.exr", {"--bits", "32"}, "--bits: \"32\" is none of 8, 16, half, float");
    expectUsageError("a.exr", {"--compression", "zap"},
                     "--compression: .exr files cannot have zap, only none, rle, zips, zip, piz");
    expectUsageError("a.png", {"--compression", "zip"}, "--compression: .png files leave no choice");
    expectUsageError("a.png", {"--tiled"}, "--tiled: .png files have no tiles; EXR and TIFF files can have them");
    expectUsageError("a.exr", {"--exposure", "1"},
                     "a.exr\" contains light itself; the view is for files of 8 or 16 bits");
    expectUsageError("a.tif", {"--bits", "float", "--view-transform", "filmic"}, "--view-transform: ");
    expectUsageError("a.png", {"--view-transform", "film"}, "--view-transform: \"film\" is none of standard, filmic");
    expectUsageError("a.png", {"--exposure", "nan"}, "\"nan\" is not a number from -32 to 32");
    expectUsageError("a.png", {"--exposure", "1", "--workflow", "classic"}, "--workflow linear renders light");
    EXPECT_EQ(directory_.names(), std::vector<std::string>{"scene.json"});
}

} // namespace
} // namespace velm::host
