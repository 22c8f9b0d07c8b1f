// The command "velm compare": its exit statuses, output and options.
#include "host/image/image.h"
#include "host/image/picture.h"

#include "tests/cli/command.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::Outcome;
using test::TemporaryDirectory;

class CompareCommand : public testing::Test {
  protected:
    CompareCommand() {
        Picture picture(4, 3);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 4; ++x) picture.pixel(x, y)[0] = 0.25F;
        writePicture(picture, file("a.exr"));
        picture.pixel(2, 1)[1] = 0.5F;
        writePicture(picture, file("b.exr"));
        writePicture(Picture(3, 4), file("turned.exr"));
        directory_.write("text.exr", "no picture");
    }

    std::string file(const char *name) const { return directory_ / name; }
    Outcome compare(const char *first, const char *second, const std::vector<std::string> &options = {}) const {
        std::vector<std::string> words{"compare", file(first), file(second)};
        words.insert(words.end(), options.begin(), options.end());
        return test::velm(words, false);
    }

  private:
    TemporaryDirectory directory_;
};

TEST_F(CompareCommand, ReturnsZeroForTheSame) {
    const Outcome outcome = compare("a.exr", "a.exr");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "the same\n"
                           "  mean    0; at most 0.002\n"
                           "  RMS     0; at most 0.002\n"
                           "  pixels  0 of 12 differ by more than 0.004; at most 0 %\n");
}

TEST_F(CompareCommand, ReturnsOneForDifferentAndNamesThePixel) {
    const Outcome outcome = compare("a.exr", "b.exr");
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_EQ(outcome.out, "different\n"
                           "  worst   0.5 in G at 2,1: 0 and 0.5\n"
                           "  mean    0.0104167; at most 0.002\n"
                           "  RMS     0.0721688; at most 0.002\n"
                           "  pixels  1 of 12 differ by more than 0.004; at most 0 %\n");
}

TEST_F(CompareCommand, ReturnsTwoForDifferentSizes) {
    const Outcome outcome = compare("a.exr", "turned.exr");
    EXPECT_EQ(outcome.status, 2) << outcome.err;
    EXPECT_EQ(outcome.out, "other size: 4 x 3 and 3 x 4\n");
}

TEST_F(CompareCommand, ReturnsThreeForErrors) {
    for (const auto &outcome :
         {compare("a.exr", "none.exr"), compare("none.exr", "a.exr"), compare("text.exr", "a.exr"),
          compare("a.exr", "a.exr", {"--tolerance", "much"}), compare("a.exr", "a.exr", {"--no"}),
          compare("a.exr", "a.exr", {"--share", "1.5"}), compare("a.exr", "a.exr", {"--rms=-1"}),
          compare("a.exr", "a.exr", {"--tolerance", "nan"}), compare("a.exr", "a.exr", {"--mean", "nan"}),
          compare("a.exr", "a.exr", {"--differences", "d.gif"}), test::velm({"compare"}, false),
          compare("a.exr", "a.exr", {"--differences", "/dev/null/d.png"})}) {
        EXPECT_EQ(outcome.status, 3) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.starts_with("velm: ")) << outcome.err;
    }
    EXPECT_NE(compare("a.exr", "none.exr").err.find(file("none.exr") + ": cannot read the image"), std::string::npos);
}

TEST_F(CompareCommand, AppliesLimits) {
    EXPECT_EQ(compare("a.exr", "b.exr", {"--tolerance", "0.5", "--rms", "0.1", "--mean", "0.1"}).status, 0);
    EXPECT_EQ(compare("a.exr", "b.exr", {"--tolerance", "0.5", "--rms", "0.1"}).status, 1);
    EXPECT_EQ(compare("a.exr", "b.exr", {"--tolerance", "0.5", "--mean", "0.1"}).status, 1);
    EXPECT_EQ(compare("a.exr", "b.exr", {"--share", "0.1", "--rms", "0.1", "--mean", "0.1"}).status, 0);
    EXPECT_EQ(compare("a.exr", "b.exr", {"--share", "0.05", "--rms", "0.1", "--mean", "0.1"}).status, 1);
}

TEST_F(CompareCommand, LeavesAlphaOutWhenAsked) {
    Picture picture(1, 1);
    writePicture(picture, file("clear.exr"));
    picture.pixel(0, 0)[3] = 1;
    writePicture(picture, file("opaque.exr"));
    EXPECT_EQ(compare("clear.exr", "opaque.exr").status, 1);
    EXPECT_EQ(compare("clear.exr", "opaque.exr", {"--no-alpha"}).status, 0);
}

TEST_F(CompareCommand, WritesTheDifferences) {
    EXPECT_EQ(compare("a.exr", "b.exr", {"--differences", file("new/d.exr")}).status, 1);
    const auto image = readImage(file("new/d.exr"), "differences");
    float colour[3];
    pixel(image.get(), 2, 1, colour);
    EXPECT_EQ(colour[1], 0.5F);
    pixel(image.get(), 1, 1, colour);
    EXPECT_EQ(colour[1], 0);
}

TEST_F(CompareCommand, ReplacesNeitherPicture) {
    for (const char *name : {"a.exr", "b.exr"}) {
        const auto size = std::filesystem::file_size(file(name));
        const test::Outcome outcome = compare("a.exr", "b.exr", {"--differences", file(name)});
        EXPECT_EQ(outcome.status, 3);
        EXPECT_NE(outcome.err.find("it is read"), std::string::npos) << outcome.err;
        EXPECT_EQ(std::filesystem::file_size(file(name)), size);
    }
    EXPECT_EQ(compare("a.exr", "b.exr").status, 1) << "the pictures are unchanged";
}

} // namespace
} // namespace velm::host
