// The formats of image files: every reading of files that other programs wrote, and the refusal of all other formats.
#include "host/base/error.h"
#include "host/image/file_pixels.h"
#include "host/image/image.h"
#include "host/image/image_formats.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace velm::host::test {
namespace {

const std::filesystem::path kDirectory = VELM_SOURCE_DIR "/tests/image/formats";

// A line of expected.txt: what another reader found in the file. make_files.py describes it.
struct Expected {
    std::string file;
    int width = 0, height = 0, channels = 0;
    bool isLight = false;
    std::vector<double> numbers;

    bool isColour() const { return channels >= 3; }
    bool hasAlpha() const { return channels % 2 == 0; }
    const double *pixel(int x, int y) const {
        return numbers.data() + static_cast<std::ptrdiff_t>(y * width + x) * channels;
    }
};

std::vector<Expected> allExpected() {
    std::vector<Expected> all;
    std::ifstream lines(kDirectory / "expected.txt");
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        Expected &one = all.emplace_back();
        words >> one.file >> one.width >> one.height >> one.channels >> one.isLight;
        one.numbers.assign(std::istream_iterator<double>(words), {});
    }
    return all;
}

// By definition of the sRGB curve.
double decoded(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

// The JPEG standard lets decoders differ by one step of 8 bits. All other numbers are exact, but for the precision of
// the text and of the table that decodes them.
double toleranceOf(const Expected &file) { return file.file.ends_with(".jpg") ? 1.01 / 255 : 2e-6; }

class ImageFile : public testing::TestWithParam<Expected> {};

TEST_P(ImageFile, IsReadAsByAnotherReader) {
    const Expected &expected = GetParam();
    ASSERT_EQ(expected.numbers.size(),
              static_cast<std::size_t>(expected.width) * static_cast<std::size_t>(expected.height * expected.channels));
    const auto image = readImage(kDirectory / expected.file, "a");
    ASSERT_EQ(image->width, expected.width);
    ASSERT_EQ(image->height, expected.height);
    EXPECT_EQ(image->channels, expected.channels);
    EXPECT_EQ(image->isColour, expected.isColour());
    EXPECT_EQ(image->hasAlpha, expected.hasAlpha());
    const double slope = 2.4 / 1.055; // of the curve that decodes, at most
    for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
            SCOPED_TRACE(std::to_string(x) + ", " + std::to_string(y));
            const double *numbers = expected.pixel(x, y);
            float colour[3];
            pixel(image.get(), x, y, colour);
            for (int i = 0; i < 3; ++i) {
                const double number = numbers[expected.isColour() ? i : 0];
                EXPECT_NEAR(colour[i], expected.isLight ? number : decoded(number), slope * toleranceOf(expected));
            }
            EXPECT_NEAR(pixelAlpha(image.get(), x, y), expected.hasAlpha() ? numbers[expected.channels - 1] : 1, 1e-6);
        }
    }
}

TEST_P(ImageFile, IsComparedAsByAnotherReader) {
    const Expected &expected = GetParam();
    const FilePixels pixels = readFilePixels(kDirectory / expected.file);
    ASSERT_EQ(pixels.width, expected.width);
    ASSERT_EQ(pixels.height, expected.height);
    ASSERT_EQ(pixels.channels.size(), static_cast<std::size_t>(expected.channels));
    EXPECT_EQ(pixels.isLight, expected.isLight);
    EXPECT_EQ(pixels.grey >= 0, !expected.isColour());
    ASSERT_EQ(pixels.alpha >= 0, expected.hasAlpha());
    std::vector<int> order{pixels.grey};
    if (expected.isColour()) order = {pixels.find("R"), pixels.find("G"), pixels.find("B")};
    if (expected.hasAlpha()) order.push_back(pixels.alpha);
    for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
            for (std::size_t i = 0; i < order.size(); ++i) {
                ASSERT_GE(order[i], 0);
                EXPECT_NEAR(pixels.pixel(x, y)[order[i]], expected.pixel(x, y)[i], toleranceOf(expected))
                    << x << ", " << y << ", " << i;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, ImageFile, testing::ValuesIn(allExpected()), [](const auto &expected) {
    std::string name = expected.param.file;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

std::string bytesOf(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(ImageFormats, AreAllTested) {
    std::string endings;
    for (const Expected &one : allExpected()) endings += std::filesystem::path(one.file).extension();
    for (const char *ending : {".png", ".jpg", ".tif", ".exr", ".hdr", ".bmp", ".gif", ".psd", ".tga"})
        EXPECT_NE(endings.find(ending), std::string::npos) << ending;
    EXPECT_EQ(imageFormats(), "PNG, JPEG, TIFF, EXR, HDR, BMP, GIF, PSD, TGA");
}

TEST(ImageFormats, AreDocumented) {
    for (const char *name : {"/docs/scene.md", "/docs/commands.md"}) {
        std::string text = bytesOf(std::string(VELM_SOURCE_DIR) + name);
        std::replace(text.begin(), text.end(), '\n', ' ');
        const std::string list = imageFormats();
        EXPECT_NE(text.find(list.substr(0, list.rfind(',')) + " and " + list.substr(list.rfind(' ') + 1)),
                  std::string::npos)
            << name;
    }
}

TEST(ImageFormats, AreRecognisedByTheContents) {
    const TemporaryDirectory directory;
    for (const Expected &one : allExpected()) {
        for (const char *name : {"a", "a.exr", "a.mov", "what?is=this.png"}) {
            writeText(directory / name, bytesOf(kDirectory / one.file));
            EXPECT_EQ(readImage(directory / name, "a")->width, one.width) << one.file << " as " << name;
        }
    }
}

std::string refusalOf(const std::string &file) {
    try {
        readImage(file, "a");
    } catch (const InputError &error) {
        return error.what();
    }
    return "it was read";
}

// Formats that the image library knows, too. Its reader of films opens what a playlist names.
TEST(ImageFormats, AllOthersAreRefused) {
    const TemporaryDirectory directory;
    const std::string pipe = directory / "seg.ts";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::array<std::pair<const char *, std::string>, 6> files{
        {{"clip.mov", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nseg.ts\n#EXT-X-ENDLIST\n"},
         {"clip.png", "#EXTM3U\n#EXTINF:1,\nseg.ts\n"},
         {"a.ppm", "P6\n1 1\n255\nabc"},
         {"a.fits", "SIMPLE  =                    T / file does conform to FITS standard"},
         {"a.tga", "this is a text, and no picture at all"},
         {"a.dpx", std::string("SDPX\0\0\x08\0V1.0", 12)}}};
    for (const auto &[name, bytes] : files) {
        writeText(directory / name, bytes);
        EXPECT_EQ(refusalOf(directory / name),
                  (directory / name) +
                      ": cannot read the image: it has none of the formats that are read: " + imageFormats());
    }
    writeText(directory / "empty.png", "");
    EXPECT_EQ(refusalOf(directory / "empty.png"), (directory / "empty.png") + ": cannot read the image: it is empty");
}

TEST(ImageFormats, WhatTheLibrariesPrintIsInTheMessage) {
    const TemporaryDirectory directory;
    const std::string bytes = bytesOf(kDirectory / "rgb.png");
    writeText(directory / "a.png", bytes.substr(0, bytes.size() / 2));
    testing::internal::CaptureStderr();
    const std::string refusal = refusalOf(directory / "a.png");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(refusal.starts_with((directory / "a.png") + ": cannot read the image: ")) << refusal;
    EXPECT_NE(refusal.find("(libpng error: "), std::string::npos) << refusal;
}

} // namespace
} // namespace velm::host::test
