// Image files whose headers claim a size that is impossible, too large, or merely unusual.
#include "host/base/error.h"
#include "host/image/image.h"
#include "tests/image/image_files.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/resource.h>

namespace velm::host::test {
namespace {

using Sides = std::array<std::uint32_t, 2>;
constexpr Sides kNothing = {0, 0}, kNoWidth = {0, 100000}, kHuge = {100000, 100000};

std::string bytesOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string bigEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xff);
    return bytes;
}

// The checksum of PNG chunks: CRC-32 as in ISO 3309.
std::uint32_t checksum(const std::string &bytes) {
    std::uint32_t crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return ~crc;
}

// Each of these functions writes a file whose header claims these sides, with 2 by 2 pixels or none.
void claimInPng(const std::string &file, const Sides &sides) {
    ASSERT_TRUE(writeImageFile(file, 2, 2, 3, std::vector<std::uint8_t>(12, 128)));
    std::string bytes = bytesOf(file);
    constexpr std::size_t kChunkType = 12, kSides = 16, kChecksum = 29; // of the header's chunk, the first one
    bytes.replace(kSides, 8, bigEndian(sides[0]) + bigEndian(sides[1]));
    bytes.replace(kChecksum, 4, bigEndian(checksum(bytes.substr(kChunkType, kChecksum - kChunkType))));
    writeText(file, bytes);
}

void claimInExr(const std::string &file, const Sides &sides) {
    ASSERT_TRUE(writeImageFile(file, 2, 2, 3, std::vector<float>(12, 0.5f)));
    std::string bytes = bytesOf(file);
    for (const char *window : {"dataWindow", "displayWindow"}) {
        const std::size_t name = bytes.find(window);
        ASSERT_NE(name, std::string::npos);
        const std::size_t corners = name + std::strlen(window) + 1 + std::strlen("box2i") + 1 + 4;
        const std::int32_t box[4] = {0, 0, static_cast<std::int32_t>(sides[0]) - 1,
                                     static_cast<std::int32_t>(sides[1]) - 1};
        bytes.replace(corners, sizeof box, std::string(reinterpret_cast<const char *>(box), sizeof box));
    }
    writeText(file, bytes);
}

void claimInHdr(const std::string &file, const Sides &sides) {
    writeText(file, "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(sides[1]) + " +X " +
                        std::to_string(sides[0]) + "\n");
}

void claimInPsd(const std::string &file, const Sides &sides) {
    const std::string version(1, '\1'), channels(1, '\3'), bits(1, '\x8'), zero(1, '\0');
    writeText(file, "8BPS" + zero + version + std::string(6, '\0') + zero + channels + bigEndian(sides[1]) +
                        bigEndian(sides[0]) + zero + bits + zero + channels + std::string(14, '\0'));
}

struct Claim {
    const char *name, *ending;
    bool opens; // the format's library opens a file by its header alone; otherwise it checks more, and refuses the file
    void (*write)(const std::string &file, const Sides &sides);
};

std::string refusalOf(const std::string &file) {
    try {
        readImage(file, "a");
    } catch (const InputError &error) {
        return error.what();
    }
    return "it was read";
}

// Of this process, and of those that read images for it; in bytes.
std::size_t peakMemory() {
    rusage own{}, readers{};
    getrusage(RUSAGE_SELF, &own);
    getrusage(RUSAGE_CHILDREN, &readers);
    return static_cast<std::size_t>(std::max(own.ru_maxrss, readers.ru_maxrss)) * 1024;
}

class ClaimedSize : public testing::TestWithParam<Claim> {};

TEST_P(ClaimedSize, ZeroIsRefused) {
    const TemporaryDirectory directory;
    const std::string file = directory / (std::string("a") + GetParam().ending);
    for (const Sides &sides : {kNothing, kNoWidth}) {
        GetParam().write(file, sides);
        EXPECT_TRUE(refusalOf(file).starts_with(file + ": cannot read the image: ")) << refusalOf(file);
    }
}

TEST_P(ClaimedSize, AboveTheLimitIsRefusedWithoutAllocatingIt) {
    const TemporaryDirectory directory;
    const std::string file = directory / (std::string("a") + GetParam().ending);
    GetParam().write(file, kHuge);
    const std::size_t before = peakMemory();
    const std::string refusal = refusalOf(file), start = file + ": cannot read the image: ";
    EXPECT_TRUE(refusal.starts_with(start)) << refusal;
    if (GetParam().opens) {
        EXPECT_EQ(refusal, start + "its size of 100000 by 100000 pixels with 3 channels needs more than 4096 MiB of "
                                   "memory (see --read-memory)");
    }
    constexpr std::size_t kLittle = std::size_t{64} << 20;
    EXPECT_LT(peakMemory() - before, kLittle);
}

TEST_P(ClaimedSize, LargerThanTheDataIsRefused) {
    const TemporaryDirectory directory;
    const std::string file = directory / (std::string("a") + GetParam().ending);
    GetParam().write(file, {3000, 3000});
    EXPECT_TRUE(refusalOf(file).starts_with(file + ": cannot read the image: ")) << refusalOf(file);
}

INSTANTIATE_TEST_SUITE_P(Formats, ClaimedSize,
                         testing::Values(Claim{"Png", ".png", true, claimInPng},
                                         Claim{"Exr", ".exr", false, claimInExr},
                                         Claim{"Hdr", ".hdr", true, claimInHdr},
                                         Claim{"Psd", ".psd", false, claimInPsd}),
                         [](const auto &claim) { return claim.param.name; });

// Images of a single row or column are read like any other, with every level of the pyramid.
class Line : public testing::TestWithParam<Sides> {};

TEST_P(Line, IsReadCompletely) {
    const auto [width, height] = GetParam();
    constexpr int kLength = 100000;
    const TemporaryDirectory directory;
    std::vector<std::uint8_t> values(kLength, 0);
    values.back() = 255;
    ASSERT_TRUE(writeImageFile(directory / "a.png", static_cast<int>(width), static_cast<int>(height), 1, values));
    const auto image = readImage(directory / "a.png", "a");
    EXPECT_EQ(image->width, static_cast<int>(width));
    EXPECT_EQ(image->height, static_cast<int>(height));
    float colour[3];
    pixel(image.get(), kLength - 1, kLength - 1, colour);
    EXPECT_EQ(colour[0], 1);
    pixel(image.get(), kLength - 2, kLength - 2, colour); // clamped along the side of one pixel
    EXPECT_EQ(colour[0], 0);
    ASSERT_EQ(image->levels.back().pixels.size(), 1u);
    // One pixel is white. Halving weights pixels by their exact area, so that the mean is kept.
    EXPECT_NEAR(image->levels.back().pixels[0] * kLength, 1, 1e-2);
    double spot[3];
    sampleSpot(image.get(), 0.5, 0.5, 1, spot);
    EXPECT_TRUE(std::isfinite(spot[0]));
}
INSTANTIATE_TEST_SUITE_P(RowAndColumn, Line, testing::Values(Sides{100000, 1}, Sides{1, 100000}));

} // namespace
} // namespace velm::host::test
