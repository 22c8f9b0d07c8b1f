// PNG files are compared with those that the image library writes.
#include "host/image/png_file.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

using Bytes = std::vector<unsigned char>;

// What a row of the image has.
struct RowKind {
    NumberFormat numbers;
    int channels;
};
constexpr RowKind kBytes = {.numbers = NumberFormat::uint8, .channels = 3};

// An image of scattered bytes, so that its rows do not resemble each other.
NewImage scattered(int width, int height, const RowKind &kind = kBytes) {
    NewImage image{.format = "png",
                   .width = width,
                   .height = height,
                   .fullWidth = width,
                   .fullHeight = height,
                   .channels = kind.channels,
                   .layers = {},
                   .hasStraightAlpha = kind.channels == 4,
                   .numbers = kind.numbers,
                   .row = {},
                   .texts = {{"scene", "clay.json"},
                             {"command", "velm render \"a b\" --set x=\u00e9"},
                             {"ImageDescription", "velm:scene 0ddffa56"}}};
    const int bytes = width * kind.channels * (kind.numbers == NumberFormat::uint16 ? 2 : 1);
    image.row = [row = std::vector<std::uint8_t>(static_cast<std::size_t>(bytes))](int index) mutable {
        std::uint32_t state = static_cast<std::uint32_t>(index) + 1;
        for (std::uint8_t &value : row) {
            state = state * 1664525 + 1013904223;
            value = static_cast<std::uint8_t>(state >> 28); // of 16, so that sequences repeat and are compressed
        }
        return row.data();
    };
    return image;
}

struct SizeCase {
    int width, height;
};
// Files of less than one block of compressed data, and of many blocks. libpng chooses a smaller window for small files.
constexpr SizeCase kSizes[] = {{1, 1}, {7, 3}, {64, 48}, {333, 200}, {1, 5000}, {5000, 1}};

TEST(PngFile, IsTheSameAsTheImageLibrarys) {
    for (const SizeCase &size : kSizes) {
        Bytes ours, theirs;
        std::string error;
        ASSERT_TRUE(makePng(scattered(size.width, size.height), ours, error)) << error;
        ASSERT_TRUE(imageLibrary().write(scattered(size.width, size.height), theirs, error)) << error;
        EXPECT_EQ(ours, theirs) << size.width << " x " << size.height;
    }
}

TEST(PngFile, OfWordsAndWithAlphaIsTheSameAsTheImageLibrarys) {
    for (const RowKind &kind :
         {RowKind{NumberFormat::uint8, 4}, {NumberFormat::uint16, 3}, {NumberFormat::uint16, 4}}) {
        Bytes ours, theirs;
        std::string error;
        ASSERT_TRUE(makePng(scattered(64, 48, kind), ours, error)) << error;
        ASSERT_TRUE(imageLibrary().write(scattered(64, 48, kind), theirs, error)) << error;
        EXPECT_EQ(ours, theirs) << kind.channels << " channels";
    }
}

TEST(PngFile, WithoutTextsIsTheSameAsTheImageLibrarys) {
    NewImage image = scattered(20, 10);
    image.texts.clear();
    Bytes ours, theirs;
    std::string error;
    ASSERT_TRUE(makePng(image, ours, error)) << error;
    ASSERT_TRUE(imageLibrary().write(image, theirs, error)) << error;
    EXPECT_EQ(ours, theirs);
}

TEST(PngFile, TooWideAnImageIsAnError) {
    Bytes bytes;
    std::string error;
    EXPECT_FALSE(makePng(scattered(1000001, 1), bytes, error)); // libpng's limit is a million
    EXPECT_NE(error, "");
}

} // namespace
} // namespace velm::host::test
