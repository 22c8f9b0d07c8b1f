// Rendering the frames of a scene whose backdrop is a sequence of images.
#include "tests/image/image_files.h"
#include "tests/session/open_scene.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velm::host {
namespace {

class ImageSequences : public testing::Test {
  protected:
    void SetUp() override {
        for (const int number : {1, 3})
            ASSERT_TRUE(test::writeImageFile<float>(directory_ / ("sky" + std::to_string(number) + ".exr"), 1, 1, 3,
                                                    std::vector<float>(3, 0.25F * static_cast<float>(number))));
    }
    SceneDescription scene() const {
        return readSceneText(R"({"render": {"width": 8, "height": 8, "firstFrame": 1, "lastFrame": 3},
            "cameras": {"Main": {}}, "backdrop": {"kind": "image", "image": "Sky"},
            "images": {"Sky": {"file": "sky#.exr", "sequence": {"first": 1, "last": 3}}}})",
                             directory_ / "scene.json", {});
    }
    // The red of each frame's first pixel.
    static std::vector<float> shown(Session &session, const std::vector<int> &frames, int threads) {
        Rendering rendering(session);
        std::vector<float> reds;
        for (const int frame : frames) {
            rendering.setFrame(frame);
            RenderJob job = renderJob(session);
            job.threads = threads;
            reds.push_back(rendering.render(job).picture.pixel(0, 0)[0]);
        }
        return reds;
    }

    const test::TemporaryDirectory directory_;
};

TEST_F(ImageSequences, FramesDoNotDependOnOthers) {
    Warnings warnings(Warnings::Policy::goOn);
    Session session(scene(), warnings);
    EXPECT_TRUE(warnings.all().empty());
    const std::vector<int> frames{3, 1, 2, 1, 4};
    const std::vector<float> expected{0.75F, 0.25F, 0, 0.25F, 0.75F};
    EXPECT_EQ(shown(session, frames, 1), expected);
    EXPECT_EQ(shown(session, frames, 2), expected);
    ASSERT_EQ(warnings.all().size(), 1U) << "of frame 2, once";
    EXPECT_EQ(warnings.all()[0].path, "images.Sky.file");
}

// The light of a dome is prepared from its image. A dome of one colour lights a horizontal surface with that colour.
TEST_F(ImageSequences, LightTheSceneAsDomes) {
    const SceneDescription lit = readSceneText(R"({"render": {"width": 8, "height": 8},
        "cameras": {"Main": {"position": [0, 2, 0], "rotation": [0, 90, 0]}},
        "lights": {"Sky": {"kind": "dome", "image": "Sky", "samples": 4096}},
        "objects": {"Floor": {"plane": {"width": 9, "depth": 9}, "surface": "Clay"}},
        "surfaces": {"Clay": {"settings": {"Color": [1, 1, 1], "Diffuse": 1}}},
        "images": {"Sky": {"file": "sky#.exr", "sequence": {"first": 1, "last": 3}}}})",
                                               directory_ / "scene.json", {});
    Warnings warnings(Warnings::Policy::goOn);
    Session session(lit, warnings);
    constexpr float kTolerance = 0.01F; // relative, of 4096 samples
    const std::vector<float> reds = shown(session, {3, 1, 2, 3}, 1);
    EXPECT_NEAR(reds[0], 0.75F, 0.75F * kTolerance);
    EXPECT_NEAR(reds[1], 0.25F, 0.25F * kTolerance);
    EXPECT_EQ(reds[2], 0) << "there is no file";
    EXPECT_EQ(reds[3], reds[0]);
}

TEST_F(ImageSequences, MissingFilesAreErrorsUnderTheStrictPolicy) {
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene(), warnings);
    EXPECT_EQ(shown(session, {1}, 1), std::vector<float>{0.25F});
    EXPECT_THROW(shown(session, {2}, 1), InputError);
}

} // namespace
} // namespace velm::host
