// Parts of pictures: their files, and putting them together.
#include "host/base/error.h"
#include "host/image/picture_parts.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace velm::host::test {
namespace {

constexpr int kWidth = 8, kHeight = 4;
constexpr const char *kDigest = "0123456789abcdef0123456789abcdef";

float valueAt(int x, int y, int channel) { return static_cast<float>(x + 10 * y + 100 * channel) / 7; }

PartFile part(const std::string &file, const Region &window,
              const SamplesOfPart &samples = {.first = 0, .end = 1, .count = 1}) {
    PartFile made{.file = file, .picture = Picture(kWidth, kHeight, window), .metadata = {}, .samples = samples};
    made.metadata.digest = kDigest;
    made.metadata.samples = samplesText(samples);
    for (int y = window.top; y < window.bottom; ++y)
        for (int x = window.left; x < window.right; ++x)
            for (int i = 0; i < Picture::kChannels; ++i) made.picture.pixel(x, y)[i] = valueAt(x, y, i);
    return made;
}

constexpr Region kWhole = {.left = 0, .top = 0, .right = kWidth, .bottom = kHeight};
constexpr Region kLeft = {.left = 0, .top = 0, .right = 3, .bottom = kHeight};
constexpr Region kRight = {.left = 3, .top = 0, .right = kWidth, .bottom = kHeight};

void expectFailure(std::vector<PartFile> parts, const std::string &message, int expected = 0) {
    try {
        mergeParts(std::move(parts), expected);
        ADD_FAILURE() << "no error: " << message;
    } catch (const InputError &error) {
        EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
    }
}

std::vector<PartFile> two(PartFile first, PartFile second) {
    std::vector<PartFile> parts;
    parts.push_back(std::move(first));
    parts.push_back(std::move(second));
    return parts;
}

TEST(PictureParts, PixelsOfTilesStayAsTheyAre) {
    const PartFile merged = mergeParts(two(part("b", kRight), part("a", kLeft)), 2);
    EXPECT_EQ(merged.picture.window(), kWhole);
    EXPECT_EQ(merged.metadata.samples, "0-0 of 1");
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (int i = 0; i < Picture::kChannels; ++i) EXPECT_EQ(merged.picture.pixel(x, y)[i], valueAt(x, y, i));
}

TEST(PictureParts, SamplesAreAveragedByTheirNumbers) {
    PartFile few = part("a", kWhole, {.first = 0, .end = 1, .count = 4});
    PartFile many = part("b", kWhole, {.first = 1, .end = 4, .count = 4});
    few.picture.pixel(2, 1)[0] = 8;
    many.picture.pixel(2, 1)[0] = 4;
    const PartFile merged = mergeParts(two(std::move(many), std::move(few)));
    EXPECT_EQ(merged.picture.pixel(2, 1)[0], 5);
    EXPECT_FLOAT_EQ(merged.picture.pixel(0, 0)[3], valueAt(0, 0, 3));
    EXPECT_EQ(merged.metadata.samples, "0-3 of 4");
}

TEST(PictureParts, RefusesOverlapsAndGaps) {
    expectFailure(two(part("a.exr", kLeft), part("b.exr", kWhole)), "b.exr: has pixels in common with \"a.exr\"");
    expectFailure(two(part("a", kWhole, {.first = 0, .end = 2, .count = 4}),
                      part("b", kWhole, {.first = 3, .end = 4, .count = 4})),
                  "parts are missing: pixel 0, 0 has 3 of 4 samples");
    expectFailure(two(part("a", kLeft), part("b", {.left = 5, .top = 0, .right = 6, .bottom = 1})),
                  "parts are missing: pixel 3, 0 has 0 of 1 samples");
    expectFailure(two(part("a", kLeft), part("b", kRight)), "there are 2 parts, not 3", 3);
}

TEST(PictureParts, NamesThePartsThatAreMissing) {
    std::vector<PartFile> parts = two(part("a", kLeft), part("b", kRight));
    parts[0].metadata.part = "1/4 by tiles";
    parts[1].metadata.part = "3/4 by tiles";
    expectFailure(std::move(parts), "parts are missing: 2, 4 of 4 by tiles");
}

TEST(PictureParts, RefusesPartsOfAnotherPicture) {
    PartFile other = part("b.exr", kRight);
    other.metadata.digest = "another";
    expectFailure(
        two(part("a.exr", kLeft), std::move(other)),
        "b.exr: is no part of the same picture as \"a.exr\": its digest of the scene (velm:scene) is another");
    expectFailure(two(part("a", kLeft), part("b", kRight, {.first = 0, .end = 2, .count = 2})),
                  "its number of samples is 2, not 1");
    PartFile larger = part("b", kRight);
    larger.picture = Picture(9, kHeight, kRight);
    expectFailure(two(part("a", kLeft), std::move(larger)), "its size is 9x4, not 8x4");
}

TEST(PictureParts, FilesHaveTheDataWindowAndTheHeaders) {
    const TemporaryDirectory directory;
    PartFile written = part("", {.left = 3, .top = 1, .right = 6, .bottom = 3}, {.first = 2, .end = 4, .count = 8});
    written.metadata.part = "2/4 by samples";
    written.metadata.seed = "7";
    writePicture(written.picture, directory / "a.exr", written.metadata);
    const PartFile read = readPart(directory / "a.exr");
    EXPECT_EQ(read.picture.window(), written.picture.window());
    EXPECT_EQ(read.picture.width(), kWidth);
    EXPECT_EQ(read.picture.height(), kHeight);
    EXPECT_EQ(read.samples, written.samples);
    EXPECT_EQ(read.metadata.part, "2/4 by samples");
    EXPECT_EQ(read.metadata.seed, "7");
    EXPECT_EQ(read.metadata.digest, kDigest);
    const Picture &pixels = read.picture;
    EXPECT_EQ(pixels.pixel(4, 2)[1], valueAt(4, 2, 1));
    EXPECT_EQ(pixels.pixel(0, 0)[1], 0) << "outside the window";
}

TEST(PictureParts, DigestsOfFiles) {
    const TemporaryDirectory directory;
    const PartFile written = part("", kWhole);
    for (const char *name : {"a.exr", "a.png", "a.tif"}) {
        writePicture(written.picture, directory / name, written.metadata);
        EXPECT_TRUE(hasDigest(directory / name));
        EXPECT_EQ(digestOfFile(directory / name), kDigest) << name;
    }
    writePicture(written.picture, directory / "a.jpg", written.metadata);
    EXPECT_FALSE(hasDigest(directory / "a.jpg"));
    EXPECT_EQ(digestOfFile(directory / "a.jpg"), "");
    EXPECT_EQ(digestOfFile(directory / "none.exr"), "");
}

TEST(PictureParts, RefusesFilesThatAreNoParts) {
    const TemporaryDirectory directory;
    const PartFile written = part("", kWhole);
    writePicture(written.picture, directory / "plain.exr");
    writePicture(written.picture, directory / "a.png", written.metadata);
    for (const char *name : {"plain.exr", "a.png", "none.exr"}) EXPECT_THROW(readPart(directory / name), InputError);
}

} // namespace
} // namespace velm::host::test
