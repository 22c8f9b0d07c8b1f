// Reading image files: their channels, and the conversion of their values to linear light.
#include "host/base/error.h"
#include "host/image/file_pixels.h"
#include "host/image/image.h"
#include "tests/image/image_files.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace velm::host::test {
namespace {

// sRGB values and the linear light that they encode. By definition of the curve, that is c / 12.92 up to c = 0.04045,
// and ((c + 0.055) / 1.055)^2.4 above.
struct Encoded {
    int of255;
    double linear;
};
constexpr Encoded kEncoded[] = {{0, 0}, {5, 0.001517635}, {128, 0.2158605}, {188, 0.5028865}, {255, 1}};
constexpr double kByteTolerance = 1e-6;

TEST(ReadImage, EightBitsAreDecodedFromSrgb) {
    const TemporaryDirectory directory;
    std::vector<std::uint8_t> values;
    for (const Encoded &each : kEncoded) values.insert(values.end(), 3, static_cast<std::uint8_t>(each.of255));
    ASSERT_TRUE(writeImageFile(directory / "a.png", 5, 1, 3, values));
    const auto image = readImage(directory / "a.png", "a");
    for (int x = 0; x < 5; ++x) {
        float colour[3];
        pixel(image.get(), x, 0, colour);
        for (const float component : colour) EXPECT_NEAR(component, kEncoded[x].linear, kByteTolerance) << x;
    }
}

TEST(ReadImage, SixteenBitsAreDecodedFromSrgb) {
    const TemporaryDirectory directory;
    ASSERT_TRUE(writeImageFile<std::uint16_t>(directory / "a.png", 2, 1, 3, {65535, 32896, 0, 257, 48316, 1285}));
    const auto image = readImage(directory / "a.png", "a");
    float colour[3];
    pixel(image.get(), 0, 0, colour);
    EXPECT_NEAR(colour[0], 1, kByteTolerance);
    EXPECT_NEAR(colour[1], 0.2158605, kByteTolerance);
    EXPECT_EQ(colour[2], 0);
    pixel(image.get(), 1, 0, colour);
    EXPECT_NEAR(colour[0], 1.0 / 255 / 12.92, kByteTolerance);
    EXPECT_NEAR(colour[1], 0.5028865, kByteTolerance);
    EXPECT_NEAR(colour[2], 0.001517635, kByteTolerance);
}

TEST(ReadImage, TheClassicWorkflowTakesThemAsTheyAre) {
    const TemporaryDirectory directory;
    std::vector<std::uint8_t> values;
    for (const Encoded &each : kEncoded) values.insert(values.end(), 3, static_cast<std::uint8_t>(each.of255));
    ASSERT_TRUE(writeImageFile(directory / "a.png", 5, 1, 3, values));
    const auto image = readImage(directory / "a.png", "a", Workflow::classic);
    for (int x = 0; x < 5; ++x) {
        float colour[3];
        pixel(image.get(), x, 0, colour);
        for (const float component : colour) EXPECT_NEAR(component, kEncoded[x].of255 / 255.0, kByteTolerance) << x;
    }
}

class FloatFile : public testing::TestWithParam<const char *> {};

TEST_P(FloatFile, KeepsItsValues) {
    const TemporaryDirectory directory;
    const std::string file = directory / (std::string("a") + GetParam());
    const std::vector<float> values = {0.25f, 0.5f, 1.0f, 0.125f, 4.0f, 16.0f};
    ASSERT_TRUE(writeImageFile(file, 2, 1, 3, values));
    const auto image = readImage(file, "a");
    for (int x = 0; x < 2; ++x) {
        float colour[3];
        pixel(image.get(), x, 0, colour);
        // The shared exponent of .hdr keeps 8 bits of the largest component.
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(colour[i], values[static_cast<std::size_t>(3 * x + i)], 1.0 / 16);
    }
}
INSTANTIATE_TEST_SUITE_P(Formats, FloatFile, testing::Values(".exr", ".hdr", ".tif"));

struct ChannelCase {
    const char *name;
    int channels;
    bool isColour, hasAlpha;
};
class Channels : public testing::TestWithParam<ChannelCase> {};

TEST_P(Channels, AreKept) {
    const TemporaryDirectory directory;
    const int count = GetParam().channels;
    std::vector<std::uint8_t> values;
    for (int i = 0; i < count; ++i) values.push_back(static_cast<std::uint8_t>(255 - 64 * i));
    const bool alpha = GetParam().hasAlpha;
    if (alpha) values.back() = 51;
    ASSERT_TRUE(writeImageFile(directory / "a.png", 1, 1, count, values));
    const auto image = readImage(directory / "a.png", "name");
    EXPECT_EQ(image->name, "name");
    EXPECT_EQ(image->channels, count);
    EXPECT_EQ(image->isColour, GetParam().isColour);
    EXPECT_EQ(image->hasAlpha, alpha);
    float colour[3];
    pixel(image.get(), 0, 0, colour);
    EXPECT_NEAR(colour[0], 1, kByteTolerance); // not multiplied by alpha
    EXPECT_EQ(colour[2] == colour[0], !GetParam().isColour);
    EXPECT_NEAR(pixelAlpha(image.get(), 0, 0), alpha ? 0.2 : 1, kByteTolerance); // alpha is linear in the file, too
}
INSTANTIATE_TEST_SUITE_P(All, Channels,
                         testing::Values(ChannelCase{"Luminance", 1, false, false},
                                         ChannelCase{"LuminanceAlpha", 2, false, true},
                                         ChannelCase{"Colour", 3, true, false},
                                         ChannelCase{"ColourAlpha", 4, true, true}),
                         [](const auto &each) { return each.param.name; });

// The filters get the numbers of the file; the result is converted to linear light.
TEST(ReadImage, FiltersChangeTheColoursOfTheFile) {
    const TemporaryDirectory directory;
    ASSERT_TRUE(writeImageFile<std::uint8_t>(directory / "a.png", 1, 1, 4, {51, 204, 255, 51}));
    const std::vector<ImageFilter> negative{{.kind = ImageFilter::Kind::negative}};
    const auto linear = readImage(directory / "a.png", "a", Workflow::linear, negative);
    float colour[3];
    pixel(linear.get(), 0, 0, colour);
    EXPECT_NEAR(colour[0], 0.6038273, kByteTolerance);
    EXPECT_NEAR(colour[1], 0.03310477, kByteTolerance);
    EXPECT_EQ(colour[2], 0);
    EXPECT_NEAR(pixelAlpha(linear.get(), 0, 0), 0.2, kByteTolerance);
    const auto classic = readImage(directory / "a.png", "a", Workflow::classic, negative);
    pixel(classic.get(), 0, 0, colour);
    EXPECT_NEAR(colour[0], 0.8, kByteTolerance);
    EXPECT_EQ(classic->filters, negative);
}

TEST(ReadImage, ErrorsNameTheFile) {
    const TemporaryDirectory directory;
    writeText(directory / "broken.png", "\x89PNG\r\n\x1a\nand no more");
    writeText(directory / "text.exr", "not an image");
    writeText(directory / "empty.jpg", "");
    for (const char *name : {"missing.png", "broken.png", "text.exr", "empty.jpg"}) {
        try {
            readImage(directory / name, name);
            ADD_FAILURE() << name << " was read";
        } catch (const InputError &error) {
            EXPECT_EQ(std::string(error.what()).rfind(directory / name, 0), 0u) << error.what();
        }
    }
}

// Opening a pipe could block the program, and reading a device might never end.
TEST(ReadImage, OnlyRegularFilesAreRead) {
    const TemporaryDirectory directory;
    const std::string pipe = directory / "a.png";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const auto &row : {std::pair(pipe, "pipe"), std::pair(std::string("/dev/zero"), "device")}) {
        const std::string &file = row.first;
        const std::string expected = file + ": cannot read the image: it is a " + row.second;
        const auto expectRefusal = [&](auto read) {
            try {
                read();
                ADD_FAILURE() << file << " was read";
            } catch (const InputError &error) {
                EXPECT_EQ(error.what(), expected);
            }
        };
        expectRefusal([&] { readImage(file, "a"); });
        expectRefusal([&] { readFilePixels(file); });
    }
}

TEST(ReadImage, TruncatedFileIsAnError) {
    const TemporaryDirectory directory;
    std::vector<std::uint8_t> noise;
    for (unsigned i = 0, state = 1; i < 64 * 64 * 3; ++i) {
        state = state * 1664525 + 1013904223;
        noise.push_back(static_cast<std::uint8_t>(state >> 24));
    }
    ASSERT_TRUE(writeImageFile(directory / "a.png", 64, 64, 3, noise));
    std::filesystem::resize_file(directory / "a.png", 2000);
    EXPECT_THROW(readImage(directory / "a.png", "a"), InputError);
}

} // namespace
} // namespace velm::host::test
