// Pictures of objects and cameras that move while the shutter is open.
#include "host/render/motion/paths.h"
#include "host/render/scene/render_scene_data.h"
#include "tests/render/service_table.h"
#include "tests/render/test_scene.h"

#include <algorithm>

namespace velm::host::test {
namespace {

void moveEvenly(ItemDescription &item, Channel channel, int component, double from, double to) {
    item.channels.push_back({.channel = channel,
                             .component = component,
                             .keys = {.components = 1,
                                      .keys = {{.time = 0, .value = {from, 0, 0}},
                                               {.time = 1, .value = {to, 0, 0}, .shape = kShapeLinear}}}});
}

// One frame a second. A bright plate, 2 m wide, that fills the height of a row of 64 pixels of 10 m in all.
TestScene plateScene(double shutter) {
    TestScene scene;
    scene.job.width = 64;
    scene.job.samples = 64;
    scene.description.render.framesPerSecond = 1;
    scene.description.render.firstFrame = 0;
    scene.description.backdrop.colour = {0, 0, 0};
    scene.description.cameras[0].fieldOfView = 90;
    scene.description.cameras[0].shutter = shutter;
    scene.surface("Bright", {{"Luminosity", 1}});
    scene.object("Plate", BoxShape{.size = {2, 20, 0.001}}, "Bright");
    return scene;
}

// The plate is seen at x for the part of the time in which its middle, which moves from -2 by 4 m a second, is less
// than 1 m away.
void expectBlurredPlate(const Picture &picture, double shutter) {
    constexpr double kTolerance = 0.05; // 3 of the 64 samples
    for (int x = 0; x < picture.width(); ++x) {
        const double at = (x + 0.5 - 32) * 10 / 64;
        const double from = std::clamp((at + 1) / 4 / shutter, 0.0, 1.0),
                     to = std::clamp((at + 3) / 4 / shutter, 0.0, 1.0);
        // An edge that does not move for long is as wide as a pixel.
        EXPECT_NEAR(picture.pixel(x, 0)[0], to - from, kTolerance + 0.5 * (10.0 / 64) / (4 * shutter)) << x;
    }
}

TEST(MotionBlur, ObjectsAreSeenForTheirTimes) {
    for (const double shutter : {0.5, 1.0}) {
        TestScene scene = plateScene(shutter);
        moveEvenly(scene.description.objects[0], Channel::position, 0, -2, 2);
        expectBlurredPlate(scene.render().picture, shutter);
    }
}

TEST(MotionBlur, AMovingCameraBlursWhatIsStill) {
    TestScene scene = plateScene(1);
    moveEvenly(scene.description.cameras[0], Channel::position, 0, 2, -2);
    expectBlurredPlate(scene.render().picture, 1);
}

TEST(MotionBlur, WhatMovesWithTheCameraIsSharp) {
    TestScene scene = plateScene(1);
    const Picture still = scene.render().picture;
    moveEvenly(scene.description.cameras[0], Channel::position, 0, 0, 3);
    moveEvenly(scene.description.objects[0], Channel::position, 0, 0, 3);
    scene.update();
    const Picture moving = scene.render().picture;
    for (int x = 0; x < 64; ++x) EXPECT_NEAR(moving.pixel(x, 0)[0], still.pixel(x, 0)[0], 1.0 / 64 + 1e-6) << x;
}

TEST(MotionBlur, EveryCameraHasItsOwnShutter) {
    TestScene scene = plateScene(1);
    moveEvenly(scene.description.objects[0], Channel::position, 0, -2, 2);
    CameraDescription quick = scene.description.cameras[0];
    quick.name = scene.job.camera = "Quick";
    quick.shutter = 0.5;
    scene.description.cameras.push_back(quick);
    expectBlurredPlate(scene.render().picture, 0.5);
}

TEST(MotionBlur, PicturesDoNotDependOnTheNumberOfWorkers) {
    TestScene scene = plateScene(1);
    moveEvenly(scene.description.objects[0], Channel::rotation, 1, 0, 300);
    scene.job.samples = 4;
    scene.job.height = 40;
    const Picture one = scene.render().picture;
    scene.job.threads = 3;
    EXPECT_TRUE(samePixels(one, scene.render().picture, {.left = 0, .top = 0, .right = 64, .bottom = 40}));
}

// A box that turns by 80 degrees while the shutter is open: what a node sees of it belongs together at every time.
TEST(MotionBlur, SamplesAreThoseOfTheObjectAtTheirTime) {
    TestScene scene = plateScene(1);
    scene.surface("Box", {{"Luminosity", 1}});
    int samples = 0;
    double leftmost = 1, rightmost = -1;
    scene.probe("Box", "Color", [&](ShadingSample &sample, double *) {
        ++samples;
        const Vec3 object(sample.objectPosition), normal(sample.geometricNormal);
        EXPECT_NEAR(std::max(std::fabs(object.x), std::fabs(object.z)), 0.5, 1e-5) << "on a side of the box";
        Matrix toWorld;
        std::copy_n(sample.objectToWorld, 9, toWorld.m);
        expectNear(toWorld * object, Vec3(sample.position), 1e-5, "the box stands at the origin");
        const Vec3 side = toWorld.transposedTimes(normal);
        EXPECT_NEAR(std::max(std::fabs(side.x), std::fabs(side.z)), 1, 0.01) << "its edges are straight between steps";
        EXPECT_NEAR(dot(normal, Vec3(sample.shadingNormal)), 1, 1e-5);
        const Vec3 corner{sample.vertexPositions[0][0], sample.vertexPositions[0][1], sample.vertexPositions[0][2]};
        EXPECT_NEAR(dot(corner - Vec3(sample.position), normal), 0, 1e-5) << "on its polygon";
        leftmost = std::min(leftmost, toWorld.m[2]);
        rightmost = std::max(rightmost, toWorld.m[2]);
    });
    scene.description.objects.clear();
    scene.object("Box", BoxShape{}, "Box");
    moveEvenly(scene.description.objects[0], Channel::rotation, 0, 0, 80);
    scene.render();
    EXPECT_GT(samples, 100);
    EXPECT_LT(leftmost, 0.05);
    EXPECT_GT(rightmost, 0.95) << "sine of 80 degrees";
}

// The shadow of the moving plate on a wall behind it is blurred like the plate.
TEST(MotionBlur, ShadowsMoveToo) {
    TestScene scene = plateScene(1);
    scene.surface("Wall", {{"Diffuse", 1}});
    scene.object("Wall", BoxShape{.size = {40, 40, 1}}, "Wall", {0, 0, 0.6});
    scene.description.objects[0].seenByCamera = false;
    moveEvenly(scene.description.objects[0], Channel::position, 0, -2, 2);
    LightDescription &sun = scene.description.lights.emplace_back();
    sun.position = {0, 0, -1};
    Picture picture = scene.render().picture;
    for (int x = 0; x < 64; ++x) picture.pixel(x, 0)[0] = 1 - picture.pixel(x, 0)[0];
    expectBlurredPlate(picture, 1);
}

TEST(MotionBlur, NothingMovesWithoutAShutter) {
    TestScene scene = plateScene(0);
    moveEvenly(scene.description.objects[0], Channel::position, 0, -2, 2);
    moveEvenly(scene.description.cameras[0], Channel::position, 1, 0, 1);
    const RenderSceneData &data = scene.renderScene().data();
    EXPECT_EQ(data.objects[0].motion, nullptr);
    EXPECT_TRUE(data.cameras[0].later.empty());
    scene.description.cameras[0].shutter = 0.5;
    scene.update();
    ASSERT_NE(data.objects[0].motion, nullptr);
    EXPECT_EQ(data.objects[0].motion->steps(), 2U) << "enough for a straight line";
    EXPECT_EQ(data.cameras[0].later.size(), kShutterSteps - 1U);
    scene.description.objects[0].channels.clear();
    scene.update();
    EXPECT_EQ(data.objects[0].motion, nullptr) << "although the camera moves";
    moveEvenly(scene.description.objects[0], Channel::position, 0, -2, 2);
    scene.description.cameras[0].channels.clear();
    scene.update();
    EXPECT_TRUE(data.cameras[0].later.empty()) << "although the object moves";
}

TEST(MotionBlur, TurningObjectsFollowAnArc) {
    TestScene scene = plateScene(1);
    moveEvenly(scene.description.objects[0], Channel::rotation, 2, 0, 180);
    const ItemPath &path = scene.renderScene().data().objects[0].path;
    ASSERT_EQ(path.size(), std::size_t{kShutterSteps});
    for (const double time : {0.0, 0.25, 0.55, 1.0}) {
        const double angle = kPi * time;
        const Transform now = transformAt(path, time);
        expectNear(now.toWorld * Vec3{1, 0, 0}, {std::cos(angle), std::sin(angle), 0}, 0.02);
        expectNear(now.pointToObject(now.pointToWorld({1, 2, 3})), {1, 2, 3}, 1e-9);
    }
}

TEST(MotionBlur, ServicesTellOfTheShutterAndTheMotion) {
    TestScene scene = plateScene(0.5);
    moveEvenly(scene.description.cameras[0], Channel::position, 0, 0, 4);
    auto *camera = const_cast<HostItem *>(scene.item(kItemCamera, "Camera"));
    HostFrameTiming timing{};
    cameraService().frameTiming(camera, 3, &timing);
    EXPECT_EQ(timing.intervals[0].offset, 3);
    EXPECT_EQ(timing.intervals[0].duration, 0.5);
    HostCameraEvaluator *evaluator = evaluationService().create(camera);
    ASSERT_NE(evaluator, nullptr);
    for (const double time : {0.0, 0.3, 1.0}) {
        HostCameraRay ray{};
        EXPECT_EQ(evaluationService().evaluate(evaluator, 0, 0, 0, 0, time, &ray), 1);
        expectNear(Vec3(ray.origin), {4 * 0.5 * time, 0, -5}, 1e-9);
        expectNear(Vec3(ray.filmNormal), {0, 0, 1}, 1e-9);
    }
    evaluationService().destroy(evaluator);
}

} // namespace
} // namespace velm::host::test
