// Comparing images: which differences count as the same, and which must be found.
#include "host/base/error.h"
#include "host/image/compare.h"
#include "tests/image/image_files.h"
#include "tests/temporary_directory.h"

#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace velm::host::test {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kWidth = 8, kHeight = 4;

// Values that rise slowly from pixel to pixel, each channel with an offset of its own.
FilePixels ramp(std::vector<std::string> channels = {"R", "G", "B"}) {
    FilePixels image{.width = kWidth, .height = kHeight, .isLight = true, .channels = channels, .values = {}};
    image.alpha = image.find("A");
    if (channels.size() - (image.alpha >= 0 ? 1 : 0) == 1 && channels[0] == "Y") image.grey = 0;
    for (int i = 0; i < kWidth * kHeight; ++i)
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            image.values.push_back(static_cast<float>(i) / 64.0F + static_cast<float>(channel) / 8.0F);
    return image;
}

float &at(FilePixels &image, int x, int y, int channel) {
    return image.values[static_cast<std::size_t>(y * image.width + x) * image.channels.size() +
                        static_cast<std::size_t>(channel)];
}

bool same(const FilePixels &first, const FilePixels &second, const CompareLimits &limits = {}) {
    const bool forth = withinLimits(compareImages(first, second, limits), limits);
    EXPECT_EQ(withinLimits(compareImages(second, first, limits), limits), forth) << "the order matters";
    return forth;
}

// One way in which two copies of the ramp differ, and whether they count as the same within the limits.
struct Change {
    const char *name;
    bool same;
    std::function<void(FilePixels &, FilePixels &)> make;
    CompareLimits limits = {};
};

void PrintTo(const Change &change, std::ostream *out) { *out << change.name; }

class CompareRamps : public testing::TestWithParam<Change> {};

TEST_P(CompareRamps, WithinTheLimitsOrNot) {
    FilePixels first = ramp({"R", "G", "B", "A"}), second = first;
    GetParam().make(first, second);
    EXPECT_EQ(same(first, second, GetParam().limits), GetParam().same);
}

void addToAll(FilePixels &image, float amount) {
    for (float &value : image.values) value += amount;
}

INSTANTIATE_TEST_SUITE_P(
    Every, CompareRamps,
    testing::Values(
        Change{"Nothing", true, [](auto &, auto &) {}},
        Change{"NegativeZero", true, [](auto &a, auto &b) { at(a, 0, 0, 0) = 0, at(b, 0, 0, 0) = -0.0F; }},
        Change{"OnePixelWithinTheTolerance", true, [](auto &, auto &b) { at(b, 3, 2, 1) += 0.0039F; }},
        Change{"OnePixelBeyondTheTolerance", false, [](auto &, auto &b) { at(b, 3, 2, 1) += 0.0041F; }},
        Change{"OnePixelBelow", false, [](auto &, auto &b) { at(b, 3, 2, 1) -= 0.0041F; }},
        Change{"AllBySoLittleThatOnlyTheRmsDetectsIt", false, [](auto &, auto &b) { addToAll(b, 0.0025F); }},
        Change{"AllBelowTheRms", true, [](auto &, auto &b) { addToAll(b, 0.0015F); }},
        Change{"TheRmsMayBeSet", true, [](auto &, auto &b) { addToAll(b, 0.0025F); }, {.mean = 0.003, .rms = 0.003}},
        Change{"OnlyTheMeanDetectsIt", false, [](auto &, auto &b) { addToAll(b, 0.0025F); }, {.rms = 0.003}},
        Change{"TheToleranceMayBeSet", true, [](auto &, auto &b) { at(b, 0, 0, 0) += 0.01F; }, {.tolerance = 0.02}},
        Change{"OnePixelInThirtyTwo",
               true,
               [](auto &, auto &b) { at(b, 0, 0, 0) += 0.01F; },
               {.fraction = 1.0 / 32}},
        Change{"TwoPixelsInThirtyTwo",
               false,
               [](auto &, auto &b) { at(b, 0, 0, 0) += 0.01F, at(b, 1, 0, 0) += 0.01F; },
               {.fraction = 1.0 / 32}},
        Change{"OnlyAlpha", false, [](auto &, auto &b) { at(b, 7, 3, 3) -= 0.5F; }},
        Change{"OnlyAlphaLeftOut", true, [](auto &, auto &b) { at(b, 7, 3, 3) -= 0.5F; }, {.alpha = false}},
        Change{"NaNInOne", false, [](auto &, auto &b) { at(b, 5, 1, 2) = kNaN; }},
        Change{"NaNInBoth", false, [](auto &a, auto &b) { at(a, 5, 1, 2) = at(b, 5, 1, 2) = kNaN; }},
        Change{"NaNWhereAllMayDiffer",
               false,
               [](auto &, auto &b) { at(b, 5, 1, 2) = kNaN; },
               {.tolerance = 1e30, .mean = 1e30, .rms = 1e30, .fraction = 1}},
        Change{"InfinityInOne", false, [](auto &, auto &b) { at(b, 5, 1, 2) = kInfinity; }, {.mean = 1e30, .rms = 1e30, .fraction = 1}},
        Change{"InfinityInBoth", true, [](auto &a, auto &b) { at(a, 5, 1, 2) = at(b, 5, 1, 2) = kInfinity; }},
        Change{"InfinitiesOfBothSigns", false,
               [](auto &a, auto &b) { at(a, 5, 1, 2) = kInfinity, at(b, 5, 1, 2) = -kInfinity; }},
        Change{"LargestNumbersOfBothSigns", false,
               [](auto &a, auto &b) {
                   at(a, 0, 0, 0) = std::numeric_limits<float>::max();
                   at(b, 0, 0, 0) = -std::numeric_limits<float>::max();
               }},
        Change{"AllBlack", false, [](auto &, auto &b) { std::fill(b.values.begin(), b.values.end(), 0.0F); }},
        Change{"ShiftedByOnePixel", false,
               [](auto &, auto &b) { std::rotate(b.values.begin(), b.values.begin() + 4, b.values.end()); }},
        Change{"ChannelsSwapped", false,
               [](auto &, auto &b) {
                   for (int x = 0; x < kWidth; ++x) std::swap(at(b, x, 0, 0), at(b, x, 0, 1));
               }},
        Change{"ElsewhereInTheFrame", false, [](auto &, auto &b) { b.left = 1; }},
        Change{"AsHighAsWide", false, [](auto &, auto &b) { std::swap(b.width, b.height); }}),
    [](const auto &change) { return std::string(change.param.name); });

TEST(Compare, FindsOneBrightPixelInALargePicture) {
    FilePixels dark{.width = 1000, .height = 1000, .isLight = true, .channels = {"R", "G", "B"}, .values = {}};
    dark.values.assign(3'000'000, 0.0F);
    FilePixels lit = dark;
    at(lit, 617, 988, 1) = 0.25F;
    EXPECT_FALSE(same(dark, lit));
    const Comparison comparison = compareImages(dark, lit, {});
    EXPECT_EQ(comparison.worst.x, 617);
    EXPECT_EQ(comparison.worst.y, 988);
    EXPECT_EQ(comparison.worst.channel, "G");
    EXPECT_EQ(comparison.worst.difference, 0.25);
    EXPECT_EQ(comparison.worst.first, 0);
    EXPECT_EQ(comparison.worst.second, 0.25F);
    EXPECT_EQ(comparison.pixels, 1'000'000U);
    EXPECT_EQ(comparison.beyond, 1U);
    EXPECT_DOUBLE_EQ(comparison.mean, 0.25 / 3e6);
    EXPECT_DOUBLE_EQ(comparison.rms, 0.25 / std::sqrt(3e6));
}

TEST(Compare, NamesThePixelThatIsNotANumber) {
    FilePixels first = ramp(), second = first;
    at(second, 2, 1, 0) += 100;
    at(first, 5, 3, 2) = at(second, 5, 3, 2) = kNaN;
    const Comparison comparison = compareImages(first, second, {});
    EXPECT_EQ(comparison.worst.x, 5);
    EXPECT_EQ(comparison.worst.y, 3);
    EXPECT_TRUE(std::isinf(comparison.worst.difference));
    EXPECT_EQ(comparison.notNumbers, 1U);
    EXPECT_EQ(comparison.beyond, 2U);
}

TEST(Compare, DrawsTheDifferences) {
    FilePixels first = ramp({"R", "G", "B", "A"}), second = first;
    at(second, 1, 0, 1) += 0.5F;
    at(second, 2, 3, 3) += 0.25F; // alpha shows in all colours
    const Picture picture = compareImages(first, second, {}).differences;
    const auto colour = [&](int x, int y) {
        const float *pixel = picture.pixel(x, y);
        return std::vector<float>(pixel, pixel + 4);
    };
    EXPECT_EQ(colour(0, 0), (std::vector<float>{0, 0, 0, 1}));
    EXPECT_EQ(colour(1, 0), (std::vector<float>{0, 0.5F, 0, 1}));
    EXPECT_EQ(colour(2, 3), (std::vector<float>{0.25F, 0.25F, 0.25F, 1}));
}

TEST(CompareChannels, MissingAlphaCountsAsOpaque) {
    FilePixels with = ramp({"R", "G", "B", "A"});
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) at(with, x, y, 3) = 1;
    EXPECT_TRUE(same(with, ramp()));
    at(with, 4, 2, 3) = 0.5F;
    EXPECT_FALSE(same(with, ramp()));
    EXPECT_TRUE(same(with, ramp(), {.alpha = false}));
}

TEST(CompareChannels, GreyIsComparedWithEveryColour) {
    FilePixels colour = ramp();
    const FilePixels grey = ramp({"Y"});
    EXPECT_FALSE(same(colour, grey));
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) at(colour, x, y, 1) = at(colour, x, y, 2) = at(colour, x, y, 0);
    EXPECT_TRUE(same(colour, grey));
    at(colour, 0, 0, 2) += 0.1F;
    EXPECT_FALSE(same(colour, grey));
}

TEST(CompareChannels, AreMatchedByName) {
    FilePixels other = ramp({"B", "G", "R"});
    EXPECT_FALSE(same(ramp(), other));
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) std::swap(at(other, x, y, 0), at(other, x, y, 2));
    EXPECT_TRUE(same(ramp(), other));
}

TEST(CompareChannels, ThatOnlyOneHasAreADifference) {
    EXPECT_FALSE(same(ramp(), ramp({"R", "G", "B", "Z"})));
    EXPECT_FALSE(same(ramp({"R"}), ramp()));
    EXPECT_EQ(compareImages(ramp(), ramp({"R", "G", "B", "Z"}), {}).onlyInOne, (std::vector<std::string>{"Z"}));
}

TEST(CompareChannels, NoneToCompareCountsAsADifference) {
    EXPECT_TRUE(same(ramp({"A"}), ramp({"A"})));
    EXPECT_FALSE(same(ramp({"A"}), ramp({"A"}), {.alpha = false}));
}

// For finite values and equal channels, OpenImageIO's own comparison gives the same results.
TEST(Compare, AgreesWithOpenImageIO) {
    FilePixels first = ramp(), second = first;
    unsigned state = 1;
    for (float &value : second.values) {
        state = state * 1664525 + 1013904223;
        value += static_cast<float>(state >> 8) / 16777216.0F * 0.01F;
    }
    const OIIO::ImageSpec spec(kWidth, kHeight, 3, OIIO::TypeDesc::FLOAT);
    const OIIO::ImageBuf a(spec, first.values.data()), b(spec, second.values.data());
    constexpr float kTolerance = 0.004F;
    const auto theirs = OIIO::ImageBufAlgo::compare(a, b, kTolerance, kTolerance);
    const Comparison ours = compareImages(first, second, {.tolerance = kTolerance});
    EXPECT_GT(ours.beyond, 0U);
    EXPECT_EQ(ours.beyond, theirs.nfail);
    EXPECT_EQ(ours.worst.x, theirs.maxx);
    EXPECT_EQ(ours.worst.y, theirs.maxy);
    EXPECT_EQ(first.find(ours.worst.channel), theirs.maxc);
    constexpr double kSinglePrecision = 1e-6; // OpenImageIO subtracts in float
    EXPECT_NEAR(ours.worst.difference, theirs.maxerror, kSinglePrecision);
    EXPECT_NEAR(ours.mean, theirs.meanerror, kSinglePrecision);
    EXPECT_NEAR(ours.rms, theirs.rms_error, kSinglePrecision);
}

TEST(FilePixels, KeepTheValuesOfTheFile) {
    const TemporaryDirectory directory;
    ASSERT_TRUE(writeImageFile<std::uint8_t>(directory / "a.png", 1, 1, 4, {51, 128, 255, 102}));
    const FilePixels png = readFilePixels(directory / "a.png");
    EXPECT_FALSE(png.isLight);
    EXPECT_EQ(png.channels, (std::vector<std::string>{"R", "G", "B", "A"}));
    EXPECT_EQ(png.alpha, 3);
    for (const auto &[channel, number] : {std::pair{0U, 51}, {1U, 128}, {2U, 255}, {3U, 102}})
        EXPECT_FLOAT_EQ(png.values.at(channel), static_cast<float>(number) / 255);

    ASSERT_TRUE(writeImageFile<float>(directory / "a.exr", 2, 1, 1, {-2.5F, kInfinity}));
    const FilePixels exr = readFilePixels(directory / "a.exr");
    EXPECT_TRUE(exr.isLight);
    EXPECT_EQ(exr.grey, 0);
    EXPECT_EQ(exr.values, (std::pmr::vector<float>{-2.5F, kInfinity}));
}

TEST(FilePixels, CannotBeReadFromMissingOrBrokenFiles) {
    const TemporaryDirectory directory;
    EXPECT_THROW(readFilePixels(directory / "none.png"), InputError);
    writeText(directory / "text.png", "no picture");
    EXPECT_THROW(readFilePixels(directory / "text.png"), InputError);
    const std::vector<float> values(64 * 64 * 3, 0.5F);
    ASSERT_TRUE(writeImageFile<float>(directory / "cut.exr", 64, 64, 3, values));
    std::filesystem::resize_file(directory / "cut.exr", std::filesystem::file_size(directory / "cut.exr") / 2);
    EXPECT_THROW(readFilePixels(directory / "cut.exr"), InputError);
}

// The same picture in two files: encoded for the screen, in 8 bits, and as linear light.
struct BothKinds {
    // The screen value 128 of 255 encodes the light 0.2158605. `level` is the first value of the file with light.
    explicit BothKinds(float level = 0.2158605F)
        : screen(written<std::uint8_t>("a.png", {128, 128, 128, 255, 0, 128})),
          light(written<float>("a.exr", {level, 0.2158605F, 0.2158605F, 7, -1, 0.2158605F})) {}

    template <class Value>
    FilePixels written(const std::string &name, const std::vector<Value> &values) const {
        EXPECT_TRUE(writeImageFile<Value>(directory / name, 2, 1, 3, values));
        return readFilePixels(directory / name);
    }

    const TemporaryDirectory directory;
    const FilePixels screen, light;
};

TEST(CompareKinds, LightIsEncodedForTheScreenFirst) {
    const BothKinds kinds;
    EXPECT_TRUE(same(kinds.screen, kinds.light, {.tolerance = 1e-5, .mean = 1e-5, .rms = 1e-5}));
    EXPECT_TRUE(compareImages(kinds.screen, kinds.light, {}).asScreen);
    EXPECT_FALSE(compareImages(kinds.light, kinds.light, {}).asScreen);
}

TEST(CompareKinds, EncodingDoesNotHideWhatIsNotANumber) {
    for (const float level : {kNaN, kInfinity, -kInfinity}) {
        const BothKinds kinds(level);
        EXPECT_FALSE(same(kinds.screen, kinds.light, {.tolerance = 1e30, .mean = 1e30, .rms = 1e30, .fraction = 1}))
            << level;
    }
}

TEST(CompareKinds, AlphaIsLinearInBoth) {
    const TemporaryDirectory directory;
    ASSERT_TRUE(writeImageFile<std::uint8_t>(directory / "a.png", 1, 1, 4, {255, 0, 255, 51}));
    ASSERT_TRUE(writeImageFile<float>(directory / "a.exr", 1, 1, 4, {1, 0, 1, 0.2F}));
    EXPECT_TRUE(same(readFilePixels(directory / "a.png"), readFilePixels(directory / "a.exr")));
}

} // namespace
} // namespace velm::host::test
