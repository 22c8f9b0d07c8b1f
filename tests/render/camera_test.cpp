// Rotations and the rays of the camera.
#include "host/base/error.h"
#include "host/render/scene/camera.h"
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-12;

struct RotationCase {
    const char *what;
    Double3 rotation;
    Vec3 right, up, forward; // the images of the axes
};

TEST(Rotation, TurnsTheAxes) {
    const double h = std::sqrt(0.5);
    const RotationCase cases[] = {
        {"none", {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {"heading looks to the right", {90, 0, 0}, {0, 0, -1}, {0, 1, 0}, {1, 0, 0}},
        {"pitch looks down", {0, 90, 0}, {1, 0, 0}, {0, 0, 1}, {0, -1, 0}},
        {"bank lifts the right", {0, 0, 90}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}},
        {"half a heading", {45, 0, 0}, {h, 0, -h}, {0, 1, 0}, {h, 0, h}},
        {"pitch before heading", {90, 90, 0}, {0, 0, -1}, {1, 0, 0}, {0, -1, 0}},
        {"bank before pitch", {0, 90, 90}, {0, 0, 1}, {-1, 0, 0}, {0, -1, 0}},
    };
    for (const RotationCase &each : cases) {
        const Matrix matrix = rotationMatrix(each.rotation);
        expectNear(matrix * Vec3{1, 0, 0}, each.right, kTolerance, each.what);
        expectNear(matrix * Vec3{0, 1, 0}, each.up, kTolerance, each.what);
        expectNear(matrix * Vec3{0, 0, 1}, each.forward, kTolerance, each.what);
        EXPECT_NEAR(matrix.determinant(), 1, kTolerance) << each.what;
    }
}

TEST(Rotation, LookAlongKeepsUpright) {
    for (const Vec3 &direction : {Vec3{0, 0, 2}, Vec3{3, 0, 0}, Vec3{1, 2, -3}, Vec3{0, 5, 0}, Vec3{0, -5, 0}}) {
        const Matrix matrix = lookAlong(direction);
        expectNear(matrix * Vec3{0, 0, 1}, normalised(direction), kTolerance);
        EXPECT_NEAR((matrix * Vec3{1, 0, 0}).y, 0, kTolerance);
        EXPECT_GE((matrix * Vec3{0, 1, 0}).y, -kTolerance);
        EXPECT_NEAR(matrix.determinant(), 1, kTolerance);
    }
}

TEST(Transform, GoesThereAndBack) {
    const Transform transform({.position = {1, 2, 3}, .rotation = {10, 20, 30}, .scale = {2, -3, 0.5}});
    const Vec3 point{0.3, -0.7, 1.9};
    expectNear(transform.pointToObject(transform.pointToWorld(point)), point, kTolerance);
    EXPECT_TRUE(transform.mirrors());
    // A transformed normal is at right angles to the transformed edges of its plane.
    const Vec3 a{1, 2, 0}, b{0, 1, 5};
    const Vec3 normal = transform.normalToWorld(cross(a, b));
    EXPECT_NEAR(dot(normal, transform.toWorld * a), 0, 1e-9);
    EXPECT_NEAR(dot(normal, transform.toWorld * b), 0, 1e-9);
}

CameraDescription described() {
    CameraDescription description;
    description.name = "Camera";
    description.position = {1, 2, 3};
    description.fieldOfView = 90;
    return description;
}

TEST(Camera, SpansItsHorizontalFieldOfView) {
    const Camera camera(described(), 200, 100);
    const double h = std::sqrt(0.5);
    expectNear(camera.ray(100, 50).direction, {0, 0, 1}, kTolerance, "middle");
    expectNear(camera.ray(0, 50).direction, {-h, 0, h}, kTolerance, "left edge");
    expectNear(camera.ray(200, 50).direction, {h, 0, h}, kTolerance, "right edge");
    expectNear(camera.ray(100, 0).direction, normalised({0, 0.5, 1}), kTolerance, "top edge");
    expectNear(camera.ray(100, 100).direction, normalised({0, -0.5, 1}), kTolerance, "bottom edge");
    expectNear(camera.ray(7, 9).origin, {1, 2, 3}, 0);
}

TEST(Camera, FootprintIsThePixelOnTheFilmPlane) {
    const Camera camera(described(), 200, 100);
    EXPECT_NEAR(camera.ray(100, 50).spread, 2.0 / 200, kTolerance);
    // At the edge a metre along the ray is 0.707 m away from the camera's plane.
    EXPECT_NEAR(camera.ray(0, 50).spread, 2.0 / 200 * std::sqrt(0.5), kTolerance);
}

// A picture of 200 by 100 pixels that are twice as wide as high is four times as wide as high.
TEST(Camera, PixelsNeedNotBeSquare) {
    const Camera camera(described(), 200, 100, 2);
    const double h = std::sqrt(0.5);
    expectNear(camera.ray(200, 50).direction, {h, 0, h}, kTolerance, "right edge");
    expectNear(camera.ray(100, 0).direction, normalised({0, 0.25, 1}), kTolerance, "top edge");
    EXPECT_NEAR(camera.view().tanHalfHeight, 0.25, kTolerance);
    // A pixel is 0.01 by 0.005 on the film plane at a distance of 1.
    EXPECT_NEAR(camera.ray(100, 50).spread, std::sqrt(0.01 * 0.005), kTolerance);
}

CameraDescription withLens() {
    CameraDescription description = described(); // a focal length of 18 mm
    description.aperture = 2;
    description.focusDistance = 4;
    return description;
}

TEST(Camera, RaysThroughTheLensMeetInFocus) {
    const Camera camera(withLens(), 200, 100);
    for (const double x : {0.0, 63.0, 200.0}) {
        const CameraRay middle = camera.ray(x, 30);
        const Vec3 focus = middle.origin + 4 / middle.direction.z * middle.direction;
        for (const DiscPoint lens : {DiscPoint{0, 0}, {1, 0}, {-0.6, 0.8}}) {
            const CameraRay ray = camera.ray(x, 30, lens);
            expectNear(ray.origin, Vec3{1 + 0.0045 * lens.x, 2 + 0.0045 * lens.y, 3}, kTolerance, "18 mm / 2 / 2");
            expectNear(cross(normalised(focus - ray.origin), ray.direction), {0, 0, 0}, kTolerance);
        }
    }
}

// The point at the depth z is seen through the edge of the lens at a distance of D F |z - d| / (2 z d) on the film from
// where it is seen through the middle.
TEST(Camera, PointsOutOfFocusBecomeDiscs) {
    constexpr double kDiameter = 0.009, kFocalLength = 0.018, kFocus = 4;
    const Camera camera(withLens(), 200, 100);
    for (const double depth : {1.0, 3.0, 4.0, 20.0}) {
        const double radius = kDiameter * kFocalLength * (depth - kFocus) / (2 * depth * kFocus);
        for (const DiscPoint lens : {DiscPoint{1, 0}, {0, -1}, {0.6, 0.8}}) {
            const CameraRay ray = camera.filmRay(radius * lens.x, radius * lens.y, lens);
            const Vec3 there = ray.origin + depth / ray.direction.z * ray.direction;
            expectNear(there, Vec3{1, 2, 3 + depth}, kTolerance);
        }
    }
}

TEST(Camera, APinholeHasNoLens) {
    EXPECT_FALSE(Camera(described(), 200, 100).hasLens());
    EXPECT_TRUE(Camera(withLens(), 200, 100).hasLens());
}

TEST(Camera, BladesGiveTheLensItsShape) {
    CameraDescription description = withLens();
    description.blades = 4;
    description.bladeRotation = 45;
    const Camera camera(description, 200, 100);
    double widest = 0;
    for (int i = 0; i < 100; ++i) {
        const int column = i % 10, row = i / 10 + 1;
        const DiscPoint point = camera.lensPoint({column / 10.0, row / 10.0});
        widest = std::max({widest, std::fabs(point.x), std::fabs(point.y)});
    }
    EXPECT_NEAR(widest, std::sqrt(0.5), kTolerance) << "an upright square";
}

TEST(Camera, LooksAtItsTarget) {
    CameraDescription description = described();
    description.rotation = {77, 88, 99};
    description.hasTarget = true;
    description.target = {4, 2, 3};
    expectNear(Camera(description, 10, 10).ray(5, 5).direction, {1, 0, 0}, kTolerance);
}

TEST(Camera, TellsServicesWhereItLooks) {
    CameraDescription description = described();
    description.rotation = {90, 0, 0};
    const CameraView view = Camera(description, 200, 100).view();
    expectNear(Vec3(view.position), {1, 2, 3}, 0);
    expectNear(Vec3(view.matrix), {0, 0, -1}, kTolerance, "right");
    expectNear(Vec3(view.matrix + 3), {0, 1, 0}, kTolerance, "up");
    expectNear(Vec3(view.matrix + 6), {1, 0, 0}, kTolerance, "forward");
    EXPECT_NEAR(view.tanHalfWidth, 1, kTolerance);
    EXPECT_NEAR(view.tanHalfHeight, 0.5, kTolerance);
}

TEST(Camera, RefusesWhatMakesNoSense) {
    CameraDescription description = described();
    for (const double degrees : {0.0, -10.0, 180.0, 270.0, static_cast<double>(NAN)}) {
        description.fieldOfView = degrees;
        EXPECT_THROW(Camera(description, 10, 10), InputError) << degrees;
    }
    description = described();
    description.hasTarget = true;
    description.target = description.position;
    EXPECT_THROW(Camera(description, 10, 10), InputError);
}

} // namespace
} // namespace velm::host::test
