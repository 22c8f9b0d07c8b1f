// Pixels that are NaN or infinite: a warning counts them, and names the first one and the node that makes its value.
#include "tests/image/image_files.h"
#include "tests/session/open_scene.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace velm::host::test {
namespace {

// A luminosity that is infinite at the node "Huge", and after it.
constexpr const char *kInfiniteLight = R"({
    "render": {"width": 12, "height": 8, "samples": 3},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "objects": {"Wall": {"box": {"size": [1, 1, 1]}, "surface": "Clay"}},
    "surfaces": {"Clay": {
        "nodes": {"Start": {"server": "Constant Scalar", "settings": {"Scalar": 1e200}},
                  "Huge": {"server": "Multiply Scalar", "settings": {"A": 1e200}},
                  "Half": {"server": "Multiply Scalar", "settings": {"A": 0.5}}},
        "connections": ["Start.Scalar -> Huge.B", "Huge.Out -> Half.B", "Half.Out -> Clay.Luminosity"]}}})";

Frame renderFirst(const SceneDescription &scene, Warnings &warnings, int threads) {
    Session session(scene, warnings);
    RenderJob job = renderJob(session);
    job.threads = threads;
    Rendering rendering(session);
    rendering.setFrame(1);
    return rendering.render(job);
}

TEST(NotFinite, IsCountedAndItsNodeNamed) {
    for (const int threads : {1, 2}) {
        Warnings warnings(Warnings::Policy::goOn);
        const Frame frame = renderFirst(read(kInfiniteLight), warnings, threads);
        EXPECT_GT(frame.notFinite.count, 0);
        EXPECT_LT(frame.notFinite.count, 12 * 8) << "the backdrop is in the picture, too";
        EXPECT_EQ(frame.notFinite.surface, "Clay");
        ASSERT_EQ(warnings.all().size(), 1u);
        EXPECT_EQ(warnings.all()[0].path, "surfaces.Clay.nodes.Huge");
        EXPECT_EQ(warnings.all()[0].message,
                  "frame 1: " + std::to_string(frame.notFinite.count) + " pixels are NaN or infinite, the first at " +
                      std::to_string(frame.notFinite.x) + ", " + std::to_string(frame.notFinite.y) +
                      ", where the node \"Huge\" gives such a value");
        EXPECT_TRUE(std::isinf(frame.picture.pixel(frame.notFinite.x, frame.notFinite.y)[0]));
    }
}

TEST(NotFinite, IsAnErrorUnderTheStrictPolicy) {
    Warnings warnings(Warnings::Policy::strict);
    EXPECT_THROW(renderFirst(read(kInfiniteLight), warnings, 1), InputError);
}

TEST(NotFinite, AValueOfTheSurfaceItselfHasNoNode) {
    Warnings warnings(Warnings::Policy::goOn);
    SceneDescription scene = read(R"({
        "render": {"width": 2, "height": 2},
        "cameras": {"Main": {"position": [0, 0, -5]}},
        "objects": {"Wall": {"box": {"size": [9, 9, 1]}, "surface": "Clay"}},
        "surfaces": {"Clay": {"settings": {"Color": [1e30, 1, 1], "Luminosity": 1e30}}}})");
    const Frame frame = renderFirst(scene, warnings, 1);
    EXPECT_EQ(frame.notFinite.count, 4);
    EXPECT_EQ(frame.notFinite.node, "");
    ASSERT_EQ(warnings.all().size(), 1u);
    EXPECT_EQ(warnings.all()[0].message, "frame 1: 4 pixels are NaN or infinite, the first at 0, 0");
}

// The backdrop is seen directly, and in a mirror.
TEST(NotFinite, TheImageOfTheBackdropIsNamed) {
    const TemporaryDirectory directory;
    const std::vector<float> values(3 * 8 * 4, std::nanf(""));
    ASSERT_TRUE(writeImageFile(directory / "sky.exr", 8, 4, 3, values));
    for (const char *objects : {"", R"("objects": {"Wall": {"box": {"size": [9, 9, 1]}, "surface": "Mirror"}},)"}) {
        Warnings warnings(Warnings::Policy::goOn);
        const SceneDescription scene = read(R"({
            "render": {"width": 2, "height": 2},
            "cameras": {"Main": {"position": [0, 0, -5]}},
            "images": {"Sky": {"file": ")" + directory / "sky.exr" +
                                            R"("}}, )" + objects + R"(
            "backdrop": {"kind": "image", "image": "Sky"},
            "surfaces": {"Mirror": {"settings": {"Reflection": 1}}}})");
        EXPECT_EQ(renderFirst(scene, warnings, 1).notFinite.count, 4);
        ASSERT_EQ(warnings.all().size(), 1u);
        EXPECT_EQ(warnings.all()[0].path, "backdrop.image");
        EXPECT_EQ(warnings.all()[0].message, "frame 1: 4 pixels are NaN or infinite, the first at 0, 0, where the "
                                             "image \"Sky\" of the backdrop has such a value");
    }
}

TEST(NotFinite, FinitePicturesHaveNone) {
    Warnings warnings(Warnings::Policy::strict);
    EXPECT_EQ(renderFirst(read(kOpenScene), warnings, 2).notFinite.count, 0);
}

} // namespace
} // namespace velm::host::test
