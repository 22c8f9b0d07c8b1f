// The classic workflow of LightWave's objects, without a curve between colours and files; and the linear one.
#include "host/image/file_pixels.h"
#include "tests/cli/command.h"
#include "tests/files/test_files.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::Outcome;

constexpr double kLinearHalf = 188.0 / 255; // of an 8-bit file, by definition of the sRGB curve
constexpr double kClassicHalf = 128.0 / 255;

// A triangle that faces -Z, with a luminous surface of grey 0.5.
std::string halfObject() {
    const std::string half("\x3f\0\0\0", 4), one("\x3f\x80\0\0", 4), zero(4, '\0'), noEnvelope(2, '\0');
    return test::triangleObject("Glow",
                                test::chunk("SURF", test::cString("Glow") + test::cString("") +
                                                        test::subChunk("COLR", half + half + half + noEnvelope) +
                                                        test::subChunk("LUMI", one + noEnvelope) +
                                                        test::subChunk("DIFF", zero + noEnvelope)));
}

class WorkflowTest : public testing::Test {
  protected:
    test::TemporaryDirectory directory_;
    std::string object_ = directory_.write("half.lwo", halfObject());

    std::string file(const std::string &name) const { return directory_ / name; }
    Outcome render(const std::string &name, const std::vector<std::string> &options) const {
        std::vector<std::string> words = {"render", object_,  "-o",    file(name),  "--view", "front",     "--rig",
                                          "none",   "--size", "32x32", "--samples", "2",      "--threads", "1"};
        words.insert(words.end(), options.begin(), options.end());
        Outcome outcome = test::velm(words);
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return outcome;
    }
    // Of the object, as the file has it: integers mapped to 0..1.
    double valueIn(const std::string &name) const { return readFilePixels(file(name)).pixel(8, 24)[0]; }
};

TEST_F(WorkflowTest, ObjectsAreWrittenWithoutACurve) {
    render("a.exr", {});
    EXPECT_EQ(valueIn("a.exr"), 0.5);
    for (const char *name : {"a.png", "a.tif"}) {
        render(name, {});
        EXPECT_FLOAT_EQ(static_cast<float>(valueIn(name)), static_cast<float>(kClassicHalf)) << name;
    }
    render("a.jpg", {});
    EXPECT_NEAR(valueIn("a.jpg"), kClassicHalf, 2.0 / 255);
    render("a.hdr", {});
    EXPECT_NEAR(valueIn("a.hdr"), 0.5, 1.0 / 256);
}

TEST_F(WorkflowTest, TheLinearOneConvertsEightBits) {
    render("a.exr", {"--workflow", "linear"});
    EXPECT_EQ(valueIn("a.exr"), 0.5);
    render("a.png", {"--set", "render.workflow=linear"});
    EXPECT_FLOAT_EQ(static_cast<float>(valueIn("a.png")), static_cast<float>(kLinearHalf));
}

TEST_F(WorkflowTest, ScenesAreLinearUnlessTheySayOtherwise) {
    const std::string rest = R"("cameras": {"Main": {}}, "objects": {"Half": {"mesh": {"file": "half.lwo"},
        "position": [-0.3, -0.3, 0]}}})";
    object_ = directory_.write("linear.json", "{" + rest);
    render("a.png", {});
    EXPECT_FLOAT_EQ(static_cast<float>(valueIn("a.png")), static_cast<float>(kLinearHalf));
    object_ = directory_.write("classic.json", R"({"render": {"workflow": "classic"}, )" + rest);
    render("b.png", {});
    EXPECT_FLOAT_EQ(static_cast<float>(valueIn("b.png")), static_cast<float>(kClassicHalf));
    const Outcome wrong = test::velm({"render", object_, "--workflow", "log"});
    EXPECT_EQ(wrong.status, kExitUsage);
    EXPECT_NE(wrong.err.find("--workflow: \"log\" is none of linear, classic"), std::string::npos) << wrong.err;
}

// A panorama of one grey behind everything: 188 of 255 is light of 0.5, and a display value of 188 / 255.
TEST_F(WorkflowTest, ImagesOfEightBitsAreReadAsTheyAre) {
    directory_.write("grey.tga", std::string("\0\0\3\0\0\0\0\0\0\0\0\0\1\0\1\0\x08\x20\xbc", 19));
    const std::string scene = R"("cameras": {"Main": {}}, "images": {"Grey": {"file": "grey.tga"}},
        "backdrop": {"kind": "image", "image": "Grey"}})";
    const auto backdrop = [&](const std::string &text, const std::string &picture) {
        const Outcome outcome = test::velm({"render", directory_.write("sky.json", text), "-o", file(picture), "--size",
                                            "4x4", "--quiet", "--strict"});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return double{readFilePixels(file(picture)).pixel(0, 0)[0]};
    };
    EXPECT_NEAR(backdrop("{" + scene, "a.exr"), 0.5028865, 1e-5);
    EXPECT_NEAR(backdrop(R"({"render": {"workflow": "classic"}, )" + scene, "b.exr"), 188.0 / 255, 1e-6);
    EXPECT_FLOAT_EQ(static_cast<float>(backdrop("{" + scene, "a.png")), 188.0F / 255);
    EXPECT_FLOAT_EQ(static_cast<float>(backdrop(R"({"render": {"workflow": "classic"}, )" + scene, "b.png")),
                    188.0F / 255);
}

TEST_F(WorkflowTest, PicturesAreComparedByWhatTheyHold) {
    render("a.exr", {});
    render("a.png", {});
    render("linear.exr", {"--workflow", "linear"});
    const auto compare = [&](const std::string &one, const std::string &other) {
        return test::velm({"compare", file(one), file(other), "--no-alpha"}, false).status;
    };
    EXPECT_EQ(compare("a.exr", "a.png"), 0);
    EXPECT_EQ(compare("linear.exr", "a.png"), 1);
    EXPECT_EQ(compare("linear.exr", "a.exr"), 1) << "light of 0.5 is not the display value 0.5";
}

TEST_F(WorkflowTest, PartsKeepIt) {
    for (const std::string number : {"1", "2"}) render(number + ".exr", {"--part", number + "/2", "--by", "samples"});
    ASSERT_EQ(test::velm({"merge", file("1.exr"), file("2.exr"), "-o", file("merged.png")}, false).status, kExitDone);
    EXPECT_FLOAT_EQ(static_cast<float>(valueIn("merged.png")), static_cast<float>(kClassicHalf));
}

TEST_F(WorkflowTest, AnotherOneIsAnotherPicture) {
    const auto isSkipped = [&](const std::vector<std::string> &options) {
        std::vector<std::string> all = options;
        all.emplace_back("--skip-existing");
        return render("a.png", all).err.find("exists") != std::string::npos;
    };
    render("a.png", {});
    EXPECT_TRUE(isSkipped({}));
    EXPECT_TRUE(isSkipped({"--workflow", "classic"}));
    EXPECT_FALSE(isSkipped({"--workflow", "linear"}));
    EXPECT_TRUE(isSkipped({"--workflow", "linear"}));
}

} // namespace
} // namespace velm::host
