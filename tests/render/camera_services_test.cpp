// The services for the rays and films of the scene's cameras.
#include "host/render/scene/camera.h"
#include "host/services/camera_view.h"
#include "tests/render/service_table.h"
#include "tests/render/test_scene.h"

#include <cstring>
#include <memory>
#include <numbers>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-12;

struct EndEvaluator {
    void operator()(HostCameraEvaluator *evaluator) const {
        evaluationService().cleanup(evaluator);
        evaluationService().destroy(evaluator);
    }
};
using Evaluator = std::unique_ptr<HostCameraEvaluator, EndEvaluator>;

Evaluator evaluatorOf(HostItem *camera) { return Evaluator(evaluationService().create(camera)); }

// The ray through a point of the film, from the middle of the lens, at the time when the shutter opens.
HostCameraRay rayAt(const Evaluator &evaluator, double x, double y) {
    HostCameraRay ray{};
    EXPECT_EQ(evaluationService().evaluate(evaluator.get(), x, y, 0, 0, 0, &ray), 1);
    return ray;
}

// A scene of 400 by 300 pixels with two cameras: "Camera" is level, "Turned" has a heading, pitch and bank and a
// wide view.
class CameraServices : public testing::Test {
  protected:
    CameraServices() {
        scene_.description.render.width = 400;
        scene_.description.render.height = 300;
        scene_.description.render.framesPerSecond = 25;
        scene_.description.cameras[0].position = {1, 2, 3};
        scene_.description.cameras[0].fieldOfView = 90;
        CameraDescription &turned = scene_.description.cameras.emplace_back();
        turned.name = "Turned";
        turned.position = {-4, 5, 6};
        turned.rotation = {30, -40, 50};
        turned.fieldOfView = 65;
        scene_.renderScene();
    }
    HostItem *camera(const std::string &name) { return const_cast<HostItem *>(scene_.item(kItemCamera, name)); }
    const CameraDescription &description(std::size_t index) { return scene_.description.cameras[index]; }
    TestScene scene_;
};

TEST_F(CameraServices, TheFilmHasTheShapeOfThePicture) {
    double width = 0, height = 0;
    for (const char *name : {"Camera", "Turned"}) {
        cameraService().filmSize(camera(name), &width, &height);
        EXPECT_EQ(width, 0.036);
        EXPECT_NEAR(height, 0.027, kTolerance);
    }
}

TEST_F(CameraServices, TheFilmTakesTheShapeOfThePictureThatIsRendered) {
    TestScene walled; // a node on its wall calls the service
    walled.job.width = 20;
    walled.job.height = 5;
    walled.surface("Wall");
    walled.object("Wall", BoxShape{}, "Wall");
    double width = 0, height = 0;
    walled.probe("Wall", "Color", [&, &cameras = cameraService()](ShadingSample &sample, double *) {
        cameras.filmSize(sample.sourceItem, &width, &height);
    });
    walled.render();
    EXPECT_EQ(width, 0.036);
    EXPECT_NEAR(height, 0.009, kTolerance);
}

TEST_F(CameraServices, TheFilmTakesTheShapeOfThePixels) {
    scene_.description.render.pixelAspect = 1.5;
    scene_.description.cameras[0].filmWidth = 0.02;
    scene_.update();
    double width = 0, height = 0;
    cameraService().filmSize(camera("Camera"), &width, &height);
    EXPECT_EQ(width, 0.02);
    EXPECT_NEAR(height, 0.02 / (4.0 / 3 * 1.5), kTolerance);
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    const HostCameraRay corner = rayAt(evaluator, width / 2, height / 2);
    expectNear(Vec3(corner.direction), normalised({1, height / width, 1}), kTolerance);
}

TEST_F(CameraServices, TheMiddleOfTheFilmLooksForward) {
    for (const char *name : {"Camera", "Turned"}) {
        const std::size_t index = name == std::string("Turned") ? 1 : 0;
        const Evaluator evaluator = evaluatorOf(camera(name));
        ASSERT_TRUE(evaluator);
        const HostCameraRay ray = rayAt(evaluator, 0, 0);
        const Vec3 forward = rotationMatrix(description(index).rotation) * Vec3{0, 0, 1};
        expectNear(Vec3(ray.origin), Vec3(description(index).position), 0, name);
        expectNear(Vec3(ray.direction), forward, kTolerance, name);
        expectNear(Vec3(ray.filmNormal), forward, kTolerance, name);
    }
}

TEST_F(CameraServices, EvaluatorsFollowTheirCameraAtEachNewTime) {
    CameraDescription &moving = scene_.description.cameras[0];
    for (const int component : {0, 1, 2})
        moving.channels.push_back(
            {.channel = Channel::position,
             .component = component,
             .keys = {.components = 1,
                      .keys = {{.time = 0, .value = {1.0 * component, 0, 0}},
                               {.time = 2, .value = {5.0 * component, 0, 0}, .shape = kShapeLinear}}}});
    scene_.update();
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    scene_.renderScene().setTime(scene_.description, 1, scene_.lookup());
    EXPECT_EQ(evaluationService().newTime(evaluator.get(), 25, 1), nullptr);
    expectNear(Vec3(rayAt(evaluator, 0, 0).origin), {0, 3, 6}, kTolerance);
}

// For the level camera, with 45 degrees from the middle to the left and right edges and a picture of 4
// : 3.
TEST_F(CameraServices, TheEdgesOfTheFilmAreThoseOfTheView) {
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    const double halfWidth = 0.018, halfHeight = 0.0135;
    for (const double x : {-1, 0, 1}) {
        for (const double y : {-1, 0, 1}) {
            const HostCameraRay ray = rayAt(evaluator, x * halfWidth, y * halfHeight);
            expectNear(Vec3(ray.direction), normalised({x, y * 0.75, 1}), kTolerance);
            EXPECT_NEAR(length(Vec3(ray.direction)), 1, kTolerance);
        }
    }
    const HostCameraRay beyond = rayAt(evaluator, 2 * halfWidth, 0);
    expectNear(Vec3(beyond.direction), normalised({2, 0, 1}), kTolerance, "the view goes on beyond the film");
}

TEST_F(CameraServices, TheFieldOfViewLiesBetweenTheEdges) {
    const Evaluator evaluator = evaluatorOf(camera("Turned"));
    const Vec3 left(rayAt(evaluator, -0.018, 0).direction), right(rayAt(evaluator, 0.018, 0).direction);
    EXPECT_NEAR(std::acos(dot(left, right)) * 180 / std::numbers::pi, 65, 1e-9);
}

// Projects the evaluator's rays back onto a film at the focal length, along the camera's axes.
TEST_F(CameraServices, PlacesGoThroughTheLensAndBack) {
    const Evaluator evaluator = evaluatorOf(camera("Turned"));
    const Matrix axes = rotationMatrix(description(1).rotation);
    const double focalLength = 0.018 / std::tan(65 * std::numbers::pi / 360);
    for (const double x : {-0.018, -0.004, 0.0, 0.011}) {
        for (const double y : {-0.0135, 0.003, 0.0135}) {
            const Vec3 seen = axes.transposedTimes(Vec3(rayAt(evaluator, x, y).direction));
            EXPECT_NEAR(seen.x / seen.z * focalLength, x, kTolerance);
            EXPECT_NEAR(seen.y / seen.z * focalLength, y, kTolerance);
        }
    }
}

TEST_F(CameraServices, GiveTheRaysThatPicturesAreTakenWith) {
    for (std::size_t index = 0; index < 2; ++index) {
        const Evaluator evaluator = evaluatorOf(camera(description(index).name));
        double width = 0, height = 0;
        cameraService().filmSize(camera(description(index).name), &width, &height);
        // The point on the film does not depend on the number of pixels.
        for (const int scale : {1, 3}) {
            const Camera renderers(description(index), 400 * scale, 300 * scale);
            for (const double u : {0.0, 0.25, 0.6, 1.0}) {
                for (const double v : {0.0, 0.3, 1.0}) {
                    const CameraRay expected = renderers.ray(u * 400 * scale, (1 - v) * 300 * scale);
                    const HostCameraRay ray = rayAt(evaluator, (u - 0.5) * width, (v - 0.5) * height);
                    expectNear(Vec3(ray.origin), expected.origin, 0);
                    expectNear(Vec3(ray.direction), expected.direction, kTolerance);
                }
            }
        }
    }
}

TEST_F(CameraServices, NeitherLensNorTimeMoveARay) {
    const Evaluator evaluator = evaluatorOf(camera("Turned"));
    const HostCameraRay middle = rayAt(evaluator, 0.005, -0.002);
    for (const double lens : {-1.0, 0.5, 1.0}) {
        for (const double time : {0.0, 0.5, 1.0}) {
            HostCameraRay ray{};
            EXPECT_EQ(evaluationService().evaluate(evaluator.get(), 0.005, -0.002, lens, -lens, time, &ray), 1);
            expectNear(Vec3(ray.origin), Vec3(middle.origin), 0);
            expectNear(Vec3(ray.direction), Vec3(middle.direction), 0);
        }
    }
}

TEST_F(CameraServices, RaysStartOnTheLens) {
    CameraDescription &lens = scene_.description.cameras[0]; // a focal length of 18 mm
    lens.aperture = 3;
    lens.focusDistance = 2;
    scene_.update();
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    const auto ray = [&](double x, double y) {
        HostCameraRay found{};
        EXPECT_EQ(evaluationService().evaluate(evaluator.get(), 0, 0, x, y, 0, &found), 1);
        return found;
    };
    expectNear(Vec3(ray(-1, 0).origin), {1 - 0.003, 2, 3}, kTolerance);
    expectNear(Vec3(ray(-1, 0).direction), normalised({0.003, 0, 2}), kTolerance);
    const double edge = 0.003 * std::sqrt(0.5);
    expectNear(Vec3(ray(1, 1).origin), {1 + edge, 2 + edge, 3}, kTolerance, "not beyond the lens");
    HostCameraRay none{};
    EXPECT_EQ(evaluationService().evaluate(evaluator.get(), 0, 0, NAN, 0, 0, &none), 0);
}

TEST_F(CameraServices, TheFilterLetsAllColoursThrough) {
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    const HostCameraRay ray = rayAt(evaluator, 0.01, 0.01);
    for (int row = 0; row < 3; ++row) {
        double sum = 0;
        for (const double entry : ray.filter[row]) sum += entry;
        EXPECT_EQ(sum, 1);
        EXPECT_EQ(ray.filter[row][row], 1);
    }
}

TEST_F(CameraServices, AFrameIsOneOpeningOfTheShutter) {
    for (const int frame : {0, 1, 40, -3}) {
        HostFrameTiming timing;
        std::memset(&timing, 0x55, sizeof timing);
        cameraService().frameTiming(camera("Turned"), frame, &timing);
        const HostFrameInterval &shutter = timing.intervals[0];
        EXPECT_EQ(shutter.count, 1u);
        EXPECT_NEAR(shutter.offset, frame * 0.04, kTolerance) << "the time of the frame";
        EXPECT_NEAR(shutter.duration, 0.04, kTolerance);
        EXPECT_NEAR(shutter.stride, 0.04, kTolerance);
        EXPECT_EQ((frame / 25.0 - shutter.offset) / shutter.duration, 0) << "a frame's time is its beginning";
        EXPECT_NEAR(((frame + 1) / 25.0 - shutter.offset) / shutter.duration, 1, 1e-9) << "and the next one's its end";
        for (std::size_t i = 1; i < std::size(timing.intervals); ++i) {
            EXPECT_EQ(timing.intervals[i].count, 0u);
            EXPECT_EQ(timing.intervals[i].duration, 0);
        }
    }
}

TEST_F(CameraServices, AnEvaluatorGoesThroughARender) {
    const HostCameraEvaluation &cameras = evaluationService();
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    EXPECT_EQ(cameras.init(evaluator.get(), kInitRender), nullptr);
    cameras.preview(evaluator.get(), 0);
    for (int frame = 1; frame < 4; ++frame) {
        cameras.reset(evaluator.get());
        EXPECT_EQ(cameras.newTime(evaluator.get(), frame, frame / 25.0), nullptr);
        expectNear(Vec3(rayAt(evaluator, 0, 0).direction), {0, 0, 1}, kTolerance);
    }
}

TEST_F(CameraServices, WhatIsNoCameraGivesNoRays) {
    TestScene other;
    other.surface("Grey");
    other.object("Box", BoxShape{}, "Grey");
    other.description.lights.emplace_back().name = "Sun";
    other.description.lights.back().position = {0, 1, 0};
    HostItem *const foreign = camera("Camera");
    other.renderScene();
    HostItem *const box = const_cast<HostItem *>(other.item(kItemObject, "Box"));
    HostItem *const sun = const_cast<HostItem *>(other.item(kItemLight, "Sun"));
    for (HostItem *item : {static_cast<HostItem *>(nullptr), box, sun, foreign}) {
        EXPECT_EQ(evaluationService().create(item), nullptr);
        double width = 7, height = 7;
        cameraService().filmSize(item, &width, &height);
        EXPECT_EQ(width, 0);
        EXPECT_EQ(height, 0);
        HostFrameTiming timing;
        std::memset(&timing, 0x55, sizeof timing);
        cameraService().frameTiming(item, 5, &timing);
        EXPECT_EQ(timing.intervals[0].count, 0u);
        EXPECT_EQ(timing.intervals[0].duration, 0);
    }
}

TEST_F(CameraServices, ACameraThatMakesNoSenseGivesNoRays) {
    TestScene other;
    for (const auto &[name, degrees] : {std::pair{"Closed", 0.0}, {"Backwards", 200.0}}) {
        CameraDescription &camera = other.description.cameras.emplace_back();
        camera.name = name;
        camera.fieldOfView = degrees;
    }
    other.renderScene();
    for (const char *name : {"Closed", "Backwards"})
        EXPECT_EQ(evaluationService().create(const_cast<HostItem *>(other.item(kItemCamera, name))), nullptr) << name;
}

TEST_F(CameraServices, NoEvaluatorGivesNoRays) {
    const HostCameraEvaluation &cameras = evaluationService();
    HostCameraRay ray{};
    EXPECT_EQ(cameras.evaluate(nullptr, 0, 0, 0, 0, 0, &ray), 0);
    EXPECT_NE(cameras.init(nullptr, kInitRender), nullptr);
    EXPECT_NE(cameras.newTime(nullptr, 1, 0), nullptr);
    cameras.reset(nullptr);
    cameras.preview(nullptr, 0);
    cameras.cleanup(nullptr);
    cameras.destroy(nullptr);
}

TEST_F(CameraServices, PlacesThatAreNoNumbersHaveNoRay) {
    const Evaluator evaluator = evaluatorOf(camera("Camera"));
    HostCameraRay ray{};
    for (const double nowhere : {static_cast<double>(NAN), static_cast<double>(INFINITY)}) {
        EXPECT_EQ(evaluationService().evaluate(evaluator.get(), nowhere, 0, 0, 0, 0, &ray), 0);
        EXPECT_EQ(evaluationService().evaluate(evaluator.get(), 0, -nowhere, 0, 0, 0, &ray), 0);
    }
}

TEST_F(CameraServices, AnEvaluatorMayOutliveItsScene) {
    Evaluator evaluator;
    {
        TestScene other;
        other.description.cameras[0].position = {9, 8, 7};
        other.renderScene();
        evaluator = evaluatorOf(const_cast<HostItem *>(other.item(kItemCamera, "Camera")));
    }
    expectNear(Vec3(rayAt(evaluator, 0, 0).origin), {9, 8, 7}, 0);
}

TEST(CameraServicesWithoutAScene, TellOfNothing) {
    EXPECT_EQ(evaluationService().create(nullptr), nullptr);
    double width = 7, height = 7;
    cameraService().filmSize(nullptr, &width, &height);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
}

} // namespace
} // namespace velm::host::test
