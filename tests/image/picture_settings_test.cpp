// How pictures are stored: alpha, the numbers of the file, compression and tiles.
#include "host/image/file_pixels.h"
#include "host/image/picture.h"
#include "host/image/transfer.h"
#include "tests/temporary_directory.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace velm::host::test {
namespace {

// Two pixels: light of 0.25, which half covers the pixel, and nothing.
Picture halfCovered() {
    Picture picture(2, 1);
    for (const auto &[i, value] : {std::pair{0, 0.25F}, {1, 0.5F}, {2, 0.0F}, {3, 0.5F}})
        picture.pixel(0, 0)[i] = value;
    return picture;
}

PictureMetadata leftOut() {
    PictureMetadata metadata;
    metadata.backdrop = kBackdropLeftOut;
    return metadata;
}

struct AlphaCase {
    const char *file;
    NumberFormat numbers;
    float colour;    // of light of 0.5 (0.25 divided by its coverage) or of 0.25, as the file has it
    float alpha;     // of a coverage of 0.5
    float tolerance; // half a step of the numbers
};
// By definition of the sRGB curve, light of 0.5 is 0.7353570. Alpha has no curve. EXR files have the light itself.
constexpr AlphaCase kAlphaCases[] = {
    {"a.png", NumberFormat::uint8, 0.735357F, 128.0F / 255, 0.5F / 255},
    {"a.png", NumberFormat::uint16, 0.735357F, 32768.0F / 65535, 0.5F / 65535},
    {"a.tif", NumberFormat::uint8, 0.735357F, 128.0F / 255, 0.5F / 255},
    {"a.tif", NumberFormat::uint16, 0.735357F, 32768.0F / 65535, 0.5F / 65535},
    {"a.tif", NumberFormat::float32, 0.5F, 0.5F, 0},
    {"a.exr", NumberFormat::half, 0.25F, 0.5F, 0},
    {"a.exr", NumberFormat::float32, 0.25F, 0.5F, 0},
};

TEST(PictureSettings, AlphaIsStraightInPngAndTiffAndAssociatedInExr) {
    for (const AlphaCase &each : kAlphaCases) {
        SCOPED_TRACE(testing::Message() << each.file << ", numbers " << static_cast<int>(each.numbers));
        const TemporaryDirectory directory;
        writePicture(halfCovered(), directory / each.file, leftOut(),
                     {.numbers = each.numbers, .compression = {}, .isTiled = false});
        const FilePixels read = readFilePixels(directory / each.file);
        ASSERT_EQ(read.channels.size(), 4U);
        EXPECT_NEAR(read.pixel(0, 0)[0], each.colour, each.tolerance * 1.01F);
        EXPECT_FLOAT_EQ(read.pixel(0, 0)[3], each.alpha);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(read.pixel(1, 0)[i], 0);
    }
}

TEST(PictureSettings, PicturesWithTheBackdropHaveNoAlphaInPngAndTiff) {
    const TemporaryDirectory directory;
    for (const char *name : {"a.png", "a.tif"}) {
        writePicture(halfCovered(), directory / name);
        EXPECT_EQ(readFilePixels(directory / name).channels.size(), 3U) << name;
    }
}

struct ViewCase {
    ViewTransform view;
    int byte;     // of light of 0.25
    int bright;   // of light of 1
    int brighter; // of light of 8
};
// By the sRGB curve of 0.25, 0.5 and 0.125, and of the filmic curve's values: 0.3741 for 0.25, 0.8038 for 1, and 1
// for 8.
constexpr ViewCase kViewCases[] = {
    {{.exposure = 0, .curve = ViewTransform::Curve::standard}, 137, 255, 255},
    {{.exposure = 1, .curve = ViewTransform::Curve::standard}, 188, 255, 255},
    {{.exposure = -1, .curve = ViewTransform::Curve::standard}, 99, 188, 255},
    {{.exposure = 0, .curve = ViewTransform::Curve::filmic}, 165, 232, 255},
    {{.exposure = 2, .curve = ViewTransform::Curve::filmic}, 232, 252, 255},
};

TEST(PictureSettings, TheViewChangesIntegersAlone) {
    Picture picture(1, 1);
    for (const auto &[i, value] : {std::pair{0, 0.25F}, {1, 1.0F}, {2, 8.0F}}) picture.pixel(0, 0)[i] = value;
    for (const ViewCase &each : kViewCases) {
        const TemporaryDirectory directory;
        const FileSettings settings = {.numbers = {}, .compression = {}, .isTiled = false, .view = each.view};
        writePicture(picture, directory / "a.png", {}, settings);
        const FilePixels read = readFilePixels(directory / "a.png");
        EXPECT_FLOAT_EQ(read.pixel(0, 0)[0] * 255, static_cast<float>(each.byte));
        EXPECT_FLOAT_EQ(read.pixel(0, 0)[1] * 255, static_cast<float>(each.bright));
        EXPECT_FLOAT_EQ(read.pixel(0, 0)[2] * 255, static_cast<float>(each.brighter));
        writePicture(picture, directory / "a.exr", {}, settings);
        EXPECT_EQ(readFilePixels(directory / "a.exr").pixel(0, 0)[2], 8);
    }
}

// The values that the source of the curve gives, and its limits.
TEST(PictureSettings, TheFilmicCurveHasItsKnownValues) {
    EXPECT_NEAR(filmicCurve(1), 2.54 / 3.16, 1e-12);
    EXPECT_NEAR(filmicCurve(0.5), 0.6425 / 1.0425, 1e-12);
    EXPECT_EQ(filmicCurve(8), 1);
    EXPECT_EQ(filmicCurve(std::numeric_limits<double>::infinity()), 1);
    EXPECT_EQ(filmicCurve(0), 0);
    EXPECT_EQ(filmicCurve(-1), 0);
    EXPECT_EQ(filmicCurve(std::numeric_limits<double>::quiet_NaN()), 0);
}

struct NumbersCase {
    const char *file;
    NumberFormat numbers;
    OIIO::TypeDesc::BASETYPE type;
};
constexpr NumbersCase kNumbersCases[] = {
    {"a.png", NumberFormat::uint8, OIIO::TypeDesc::UINT8},   {"a.png", NumberFormat::uint16, OIIO::TypeDesc::UINT16},
    {"a.tif", NumberFormat::uint8, OIIO::TypeDesc::UINT8},   {"a.tif", NumberFormat::uint16, OIIO::TypeDesc::UINT16},
    {"a.tif", NumberFormat::float32, OIIO::TypeDesc::FLOAT}, {"a.exr", NumberFormat::half, OIIO::TypeDesc::HALF},
    {"a.exr", NumberFormat::float32, OIIO::TypeDesc::FLOAT}, {"a.jpg", NumberFormat::uint8, OIIO::TypeDesc::UINT8},
};

TEST(PictureSettings, FilesHaveTheNumbersAskedFor) {
    for (const NumbersCase &each : kNumbersCases) {
        const TemporaryDirectory directory;
        const FileChoices choices = fileChoices(each.file);
        EXPECT_EQ(std::ranges::count(choices.numbers, each.numbers), 1);
        writePicture(halfCovered(), directory / each.file, {},
                     {.numbers = each.numbers, .compression = {}, .isTiled = false});
        const auto input = OIIO::ImageInput::open(directory / each.file);
        ASSERT_TRUE(input);
        EXPECT_EQ(input->spec().format, each.type) << each.file;
    }
}

// 16 bits: light of 0.5 is 0.7353570 times 65535.
TEST(PictureSettings, WordsHaveTheCurveAndAreClamped) {
    Picture picture(1, 1);
    for (const auto &[i, value] : {std::pair{0, 0.5F}, {1, 2.0F}, {2, std::numeric_limits<float>::quiet_NaN()}})
        picture.pixel(0, 0)[i] = value;
    for (const char *name : {"a.png", "a.tif"}) {
        const TemporaryDirectory directory;
        writePicture(picture, directory / name, {},
                     {.numbers = NumberFormat::uint16, .compression = {}, .isTiled = false});
        const auto input = OIIO::ImageInput::open(directory / name);
        ASSERT_TRUE(input);
        std::uint16_t words[3];
        ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT16, words));
        EXPECT_EQ(words[0], 48192) << name;
        EXPECT_EQ(words[1], 65535) << name;
        EXPECT_EQ(words[2], 0) << name;
    }
}

TEST(PictureSettings, HalvesAreClampedToTheirRangeButStayInfinite) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Picture picture(1, 1);
    for (const auto &[i, value] : {std::pair{0, 1e6F}, {1, -1e6F}, {2, kInfinity}}) picture.pixel(0, 0)[i] = value;
    const TemporaryDirectory directory;
    writePicture(picture, directory / "a.exr", {},
                 {.numbers = NumberFormat::half, .compression = {}, .isTiled = false});
    const FilePixels read = readFilePixels(directory / "a.exr");
    EXPECT_EQ(read.pixel(0, 0)[0], 65504);
    EXPECT_EQ(read.pixel(0, 0)[1], -65504);
    EXPECT_EQ(read.pixel(0, 0)[2], kInfinity);
}

// A picture that is no multiple of the tiles' size, with a data window that does not begin at the origin.
Picture windowed() {
    Picture picture(200, 150, {.left = 30, .top = 20, .right = 171, .bottom = 139});
    for (int y = 20; y < 139; ++y)
        for (int x = 30; x < 171; ++x)
            for (int i = 0; i < 4; ++i) picture.pixel(x, y)[i] = static_cast<float>(x + 256 * y + 7 * i) / 65536;
    return picture;
}

TEST(PictureSettings, TilesHoldTheSamePixels) {
    for (const char *name : {"a.exr", "a.tif"}) {
        const TemporaryDirectory directory;
        ASSERT_TRUE(fileChoices(name).canBeTiled);
        const FileSettings rows = {.numbers = NumberFormat::float32, .compression = {}, .isTiled = false};
        FileSettings tiles = rows;
        tiles.isTiled = true;
        writePicture(windowed(), directory / name, {}, rows);
        const FilePixels expected = readFilePixels(directory / name);
        writePicture(windowed(), directory / name, {}, tiles);
        const FilePixels read = readFilePixels(directory / name);
        EXPECT_EQ(read.values, expected.values) << name;
        EXPECT_EQ(read.left, expected.left) << name;
        const auto input = OIIO::ImageInput::open(directory / name);
        ASSERT_TRUE(input);
        EXPECT_EQ(input->spec().tile_width, 64) << name;
        EXPECT_EQ(input->spec().tile_height, 64) << name;
    }
}

TEST(PictureSettings, FilesHaveTheCompressionAskedFor) {
    for (const char *name : {"a.exr", "a.tif"}) {
        for (const std::string compression : fileChoices(name).compressions) {
            const TemporaryDirectory directory;
            writePicture(windowed(), directory / name, {},
                         {.numbers = {}, .compression = compression, .isTiled = false});
            const auto input = OIIO::ImageInput::open(directory / name);
            ASSERT_TRUE(input);
            EXPECT_EQ(input->spec().get_string_attribute("Compression"), compression) << name;
        }
    }
}

TEST(PictureSettings, FormatsWithoutAChoiceOfferNone) {
    EXPECT_TRUE(fileChoices("a.hdr").numbers.empty());
    EXPECT_FALSE(fileChoices("a.hdr").hasAlpha);
    EXPECT_FALSE(fileChoices("a.png").canBeTiled);
    EXPECT_TRUE(fileChoices("a.png").compressions.empty());
    EXPECT_FALSE(fileChoices("a.jpg").hasAlpha);
}

} // namespace
} // namespace velm::host::test
