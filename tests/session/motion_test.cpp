// Rendering the frames of a scene whose items have keys.
#include "host/render/motion/pose.h"
#include "host/render/motion/values.h"
#include "host/render/scene/render_scene_data.h"
#include "tests/session/open_scene.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace velm::host {
namespace {

// Four frames a second, and values that are exact at their times. The box follows an arm, the spot light the box; the
// camera rises and narrows its view.
const char *const kMoving = R"({
    "render": {"width": 24, "height": 16, "samples": 2, "framesPerSecond": 4, "firstFrame": 0, "lastFrame": 8},
    "cameras": {"Main": {"position": [0, {"keys": [{"time": 0, "value": 1},
                                                   {"time": 2, "value": 3, "shape": "linear"}]}, -4],
                         "target": "Box",
                         "fieldOfView": {"keys": [{"time": 0, "value": 50},
                                                  {"time": 2, "value": 30, "shape": "linear"}]}}},
    "lights": {"Spot": {"kind": "spot", "position": [1, 3, -1], "target": "Box", "falloff": "none", "cone": 20,
                        "intensity": {"keys": [{"time": 0, "value": 0.5},
                                               {"time": 2, "value": 1, "shape": "linear"}]}}},
    "nulls": {"Arm": {"position": {"keys": [{"time": 0, "value": [0, 0.5, 0]},
                                            {"time": 2, "value": [1, 0.5, 2], "shape": "linear"}]}}},
    "objects": {"Box": {"box": {}, "parent": "Arm", "surface": "Clay", "position": [-0.5, 0, 0]},
                "Floor": {"plane": {"width": 8, "depth": 8}, "surface": "Clay"}},
    "surfaces": {"Clay": {}}})";

// The scene without keys whose items have the values of the keys at that time.
SceneDescription frozen(SceneDescription scene, double time) {
    const auto freeze = [time](auto &items) {
        for (auto &item : items) item = valuesAt(item, time);
    };
    freeze(scene.objects);
    freeze(scene.nulls);
    freeze(scene.lights);
    freeze(scene.cameras);
    return scene;
}

std::vector<float> pixelsOf(const Picture &picture) {
    std::vector<float> pixels;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            pixels.insert(pixels.end(), picture.pixel(x, y), picture.pixel(x, y) + Picture::kChannels);
    return pixels;
}

// The pictures of frames that a new session renders one after the other.
std::vector<std::vector<float>> framesOf(const SceneDescription &scene, const std::vector<int> &frames,
                                         int threads = 1) {
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene, warnings);
    RenderJob job = renderJob(session);
    job.threads = threads;
    Rendering rendering(session);
    std::vector<std::vector<float>> all;
    for (const int frame : frames) {
        rendering.setFrame(frame);
        all.push_back(pixelsOf(rendering.render(job).picture));
    }
    return all;
}

TEST(Motion, AFrameLooksLikeTheSceneWithoutKeys) {
    const SceneDescription scene = test::read(kMoving);
    const auto moving = framesOf(scene, {0, 1, 5, 8});
    std::size_t next = 0;
    for (const int frame : {0, 1, 5, 8})
        EXPECT_EQ(moving[next++], framesOf(frozen(scene, frame / 4.0), {frame}).front()) << "frame " << frame;
    EXPECT_NE(moving[0], moving[1]);
}

TEST(Motion, AFrameDoesNotDependOnThoseBefore) {
    const SceneDescription scene = test::read(kMoving);
    EXPECT_EQ(framesOf(scene, {2, 6, 7}).back(), framesOf(scene, {7}).front());
    EXPECT_EQ(framesOf(scene, {7, 2}).back(), framesOf(scene, {2}).front());
}

TEST(Motion, AFrameDoesNotDependOnTheNumberOfWorkers) {
    SceneDescription scene = test::read(kMoving);
    scene.render.width = 100; // several tiles
    scene.render.height = 40;
    EXPECT_EQ(framesOf(scene, {1, 7}, 1), framesOf(scene, {1, 7}, 3));
}

TEST(Motion, OnlyWhatMovesIsMadeAgain) {
    Warnings warnings(Warnings::Policy::strict);
    Session session(test::read(kMoving), warnings);
    const SceneWork before = session.renderScene().data().work;
    const Mesh *floor = session.renderScene().data().objects[1].mesh.get();
    session.setTime(1);
    const SceneWork work = session.renderScene().data().work - before;
    EXPECT_EQ(work, (SceneWork{.meshes = 0, .placements = 1, .smoothings = 1, .accelerations = 1}));
    EXPECT_EQ(session.renderScene().data().objects[1].mesh.get(), floor);
    const int updates = session.renderScene().updates();
    session.setTime(1);
    EXPECT_EQ(session.renderScene().updates(), updates) << "the same time";
}

TEST(Motion, AStillSceneStaysAsItIs) {
    Warnings warnings(Warnings::Policy::strict);
    Session session(test::read(test::kOpenScene), warnings);
    session.setTime(1);
    EXPECT_EQ(session.renderScene().updates(), 0);
}

TEST(Motion, AMeshFileIsReadOnce) {
    const test::TemporaryDirectory directory;
    directory.write("triangle.obj", "v -1 0 0\nv 0 2 0\nv 1 0 0\nf 1 2 3\n");
    const SceneDescription scene = readSceneText(
        R"({"render": {"framesPerSecond": 1, "width": 8, "height": 8}, "cameras": {"Main": {}},
            "backdrop": {"kind": "plain", "colour": [1, 0, 0]},
            "objects": {"Flag": {"mesh": {"file": "triangle.obj"}, "surface": "Clay",
                "position": {"keys": [{"time": 0, "value": [0, 0, 0]}, {"time": 9, "value": [9, 0, 0]}]}}},
            "surfaces": {"Clay": {}}})",
        directory / "scene.json", {});
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene, warnings);
    std::filesystem::remove(directory / "triangle.obj");
    EXPECT_NO_THROW(session.setTime(7));
    EXPECT_EQ(session.renderScene().data().work.meshes, 1);
}

TEST(Motion, DissolvedAndShrunkObjectsAreNotDrawn) {
    for (const char *keys :
         {R"("dissolve": {"keys": [{"time": 0, "value": 0}, {"time": 1, "value": 1, "shape": "stepped"}]})",
          R"("scale": [1, 1, {"keys": [{"time": 0, "value": 1}, {"time": 1, "value": 0}]}])"}) {
        const SceneDescription scene = test::read(
            std::string(R"({"render": {"framesPerSecond": 1, "width": 1, "height": 1}, "cameras": {"Main": {}},
                "backdrop": {"kind": "plain", "colour": [1, 0, 0]},
                "objects": {"Ball": {"sphere": {}, "surface": "Clay", )") +
            keys + R"(}}, "surfaces": {"Clay": {"settings": {"Luminosity": 1}}}})");
        const auto frames = framesOf(scene, {0, 1});
        EXPECT_GT(frames[0][1], 0.5F) << keys;
        EXPECT_EQ(frames[1][1], 0) << keys << ": only the red backdrop";
    }
}

TEST(Motion, AFailedMoveLeavesTheItemsWhereTheyWere) {
    SceneDescription scene = test::read(kMoving);
    scene.cameras[0].targetItem = "Arm";
    scene.cameras[0].parent = "Pole";
    scene.cameras[0].channels.clear();
    scene.cameras[0].position = {1, 0.5, 2}; // where the arm is in the end
    scene.nulls.emplace_back().name = "Pole";
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene, warnings);
    EXPECT_THROW(session.setTime(2), InputError);
    EXPECT_EQ(session.renderScene().data().time, 0);
    EXPECT_NO_THROW(session.setTime(1));
}

} // namespace
} // namespace velm::host
