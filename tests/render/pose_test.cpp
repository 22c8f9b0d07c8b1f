// Transforms of items at a time, compared with known positions and rotations.
#include "host/base/error.h"
#include "host/render/motion/pose.h"
#include "host/render/motion/values.h"
#include "tests/render/test_scene.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-12;

KeysDescription line(double from, double to, double seconds = 1) {
    return {
        .components = 1,
        .keys = {{.time = 0, .value = {from, 0, 0}}, {.time = seconds, .value = {to, 0, 0}, .shape = kShapeLinear}}};
}

void addKeys(ItemDescription &item, Channel channel, int component, const KeysDescription &keys) {
    item.channels.push_back({.channel = channel, .component = component, .keys = keys});
}

// A scene with one object "Ball", to which tests add nulls. at() gives the world position of a point of the ball.
struct Rig {
    Rig() {
        scene.objects.emplace_back().name = "Ball";
        scene.objects[0].shape = SphereShape{};
    }
    NullDescription &null(const std::string &name, const std::string &parent = "") {
        NullDescription &added = scene.nulls.emplace_back();
        added.name = name;
        added.parent = parent;
        return added;
    }
    ObjectDescription &ball() { return scene.objects[0]; }
    Vec3 at(const Vec3 &point, double time = 0) const { return poseAt(scene, time).objects[0].pointToWorld(point); }

    SceneDescription scene;
};

TEST(Pose, TurnsByBankThenPitchThenHeading) {
    const double h = 0.3, p = -0.5, b = 0.8; // radians
    Rig rig;
    rig.ball().rotation = {h * 180 / kPi, p * 180 / kPi, b * 180 / kPi};
    const double ch = std::cos(h), sh = std::sin(h), cp = std::cos(p), sp = std::sin(p), cb = std::cos(b),
                 sb = std::sin(b);
    // One rotation after the other, each by its own formula.
    const Vec3 banked{0.2 * cb - 0.7 * sb, 0.2 * sb + 0.7 * cb, -1.1};
    const Vec3 pitched{banked.x, banked.y * cp - banked.z * sp, banked.y * sp + banked.z * cp};
    const Vec3 headed{pitched.x * ch + pitched.z * sh, pitched.y, -pitched.x * sh + pitched.z * ch};
    expectNear(rig.at({0.2, 0.7, -1.1}), headed, kTolerance);
    expectNear(rig.at({0, 0, 1}), {sh * cp, -sp, ch * cp}, kTolerance, "forward");
}

// A ball above, behind and to the left of the origin: a heading of 45 degrees to the right and a positive pitch, which
// looks down, turn its +Z to the origin.
TEST(Pose, LooksDownWithPositivePitch) {
    Rig rig;
    rig.ball().position = {-2, 2, -2};
    rig.ball().rotation = {45, std::atan(std::sqrt(0.5)) * 180 / kPi, 0};
    expectNear(rig.at({0, 0, std::sqrt(12.0)}), {0, 0, 0}, kTolerance);
}

TEST(Pose, ScalesBeforeItTurns) {
    Rig rig;
    rig.ball().scale = {2, 3, 4};
    rig.ball().rotation = {90, 0, 0}; // +Z to +X, +X to -Z
    rig.ball().position = {10, 20, 30};
    expectNear(rig.at({1, 1, 1}), {14, 23, 28}, kTolerance);
}

TEST(Pose, ThePivotIsAtThePosition) {
    Rig rig;
    rig.ball().pivot = {1, 2, 3};
    rig.ball().position = {-4, 5, 6};
    rig.ball().rotation = {30, 40, 50};
    rig.ball().scale = {2, 3, 0.5};
    expectNear(rig.at({1, 2, 3}), {-4, 5, 6}, kTolerance);
    rig.ball().rotation = {90, 0, 0};
    expectNear(rig.at({2, 2, 3}), {-4, 5, 4}, kTolerance);
}

// world = parent * T(position) * R * S * T(-pivot): a child's position is in its parent's coordinates.
TEST(Pose, ChildrenMoveWithTheirParents) {
    Rig rig;
    NullDescription &arm = rig.null("Arm");
    arm.position = {5, 0, 0};
    arm.rotation = {90, 0, 0};
    arm.scale = {1, 1, 2};
    arm.pivot = {0, 0, 1};
    rig.ball().parent = "Arm";
    rig.ball().position = {0, 0, 3};
    expectNear(rig.at({0, 0, 0}), {9, 0, 0}, kTolerance, "2 m in front of the pivot, twice as long");
    expectNear(rig.at({1, 0, 0}), {9, 0, -1}, kTolerance);
    // A parent's parent, which is described after it.
    rig.null("Base").position = {0, 7, 0};
    rig.scene.nulls[0].parent = "Base";
    expectNear(rig.at({0, 0, 0}), {9, 7, 0}, kTolerance);
}

TEST(Pose, PointsAtItsTarget) {
    Rig rig;
    rig.ball().position = {1, 1, 1};
    rig.ball().hasTarget = true;
    rig.ball().target = {1, 1, -4};
    expectNear(rig.at({0, 0, 5}), {1, 1, -4}, kTolerance, "a point");
    NullDescription &aim = rig.null("Aim");
    aim.position = {4, 5, 1};
    aim.pivot = {9, 9, 9};
    rig.ball().targetItem = "Aim";
    expectNear(rig.at({0, 0, 5}), {4, 5, 1}, kTolerance, "an item, which is where its pivot is");
    NullDescription &base = rig.null("Base");
    base.position = {3, 2, 1};
    base.rotation = {10, 20, 30};
    rig.ball().parent = "Base";
    const Vec3 eye = rig.at({0, 0, 0});
    const Vec3 onwards = rig.at({0, 0, 1});
    expectNear(cross(normalised(onwards - eye), normalised(Vec3{4, 5, 1} - eye)), {0, 0, 0}, kTolerance,
               "with a parent that turns");
}

TEST(Pose, KeysMoveEverythingThatFollows) {
    Rig rig;
    NullDescription &arm = rig.null("Arm");
    addKeys(arm, Channel::rotation, 0, line(0, 90));
    rig.ball().parent = "Arm";
    rig.ball().position = {0, 0, 2};
    addKeys(rig.ball(), Channel::position, 1, line(0, 4));
    const double half = std::sqrt(2.0);
    expectNear(rig.at({0, 0, 0}, 0), {0, 0, 2}, kTolerance);
    expectNear(rig.at({0, 0, 0}, 0.5), {half, 2, half}, kTolerance);
    expectNear(rig.at({0, 0, 0}, 1), {2, 4, 0}, kTolerance);
    expectNear(rig.at({0, 0, 0}, 9), {2, 4, 0}, kTolerance, "constant after the last key");
}

TEST(Pose, KnowsWhatMoves) {
    Rig rig;
    NullDescription &still = rig.null("Still");
    still.position = {1, 0, 0};
    addKeys(rig.null("Moving"), Channel::position, 0, line(0, 1));
    const auto moves = [&rig]() -> bool { return poseAt(rig.scene, 0).movingObjects[0]; };
    EXPECT_FALSE(moves());
    addKeys(rig.ball(), Channel::dissolve, 0, line(0, 1));
    EXPECT_FALSE(moves()) << "keys of something else";
    rig.ball().parent = "Still";
    EXPECT_FALSE(moves());
    rig.ball().hasTarget = true;
    rig.ball().target = {0, 5, 0};
    EXPECT_FALSE(moves());
    rig.ball().targetItem = "Moving";
    EXPECT_TRUE(moves()) << "by its target";
    rig.ball().hasTarget = false;
    rig.ball().parent = "Moving";
    EXPECT_TRUE(moves()) << "by its parent";
}

TEST(Pose, EveryKindOfItemHasOne) {
    Rig rig;
    addKeys(rig.null("Base"), Channel::position, 1, line(0, 3));
    LightDescription &lamp = rig.scene.lights.emplace_back();
    lamp.name = "Lamp";
    lamp.parent = "Base";
    lamp.kind = LightDescription::Kind::point; // at the origin, which is the default target of others
    CameraDescription &camera = rig.scene.cameras.emplace_back();
    camera.name = "Camera";
    camera.parent = "Lamp";
    rig.ball().parent = "Camera";
    const ScenePose pose = poseAt(rig.scene, 1);
    expectNear(pose.lights[0].position, {0, 3, 0}, kTolerance);
    expectNear(pose.cameras[0].position, {0, 3, -5}, kTolerance);
    expectNear(pose.objects[0].position, {0, 3, -5}, kTolerance);
}

TEST(Pose, RefusesToLookAtItself) {
    Rig rig;
    rig.ball().location = {.file = "scene.json", .line = 3};
    rig.ball().hasTarget = true;
    rig.ball().targetItem = "Aim";
    addKeys(rig.null("Aim"), Channel::position, 0, line(1, 0));
    EXPECT_NO_THROW(poseAt(rig.scene, 0));
    try {
        poseAt(rig.scene, 1);
        FAIL() << "they met";
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "scene.json:3: the object \"Ball\" is at the same position as its target");
    }
}

TEST(ItemValues, AreThoseOfTheKeys) {
    LightDescription light;
    light.intensity = 7;
    light.range = 5;
    addKeys(light, Channel::colour, 2, line(1, 0));
    addKeys(light, Channel::cone, 0, line(10, 30));
    addKeys(light, Channel::edge, 0, line(0, 4));
    addKeys(light, Channel::width, 0, line(1, 2));
    addKeys(light, Channel::height, 0, line(1, 3));
    addKeys(light, Channel::length, 0, line(1, 4));
    const LightDescription half = valuesAt(light, 0.5);
    EXPECT_EQ(half.colour, (Double3{1, 1, 0.5}));
    EXPECT_EQ(half.cone, 20);
    EXPECT_EQ(half.edge, 2);
    EXPECT_EQ(half.width, 1.5);
    EXPECT_EQ(half.height, 2);
    EXPECT_EQ(half.length, 2.5);
    EXPECT_EQ(half.intensity, 7);
    EXPECT_EQ(half.range, 5);
    EXPECT_TRUE(half.channels.empty());
    CameraDescription camera;
    addKeys(camera, Channel::fieldOfView, 0, line(40, 60));
    EXPECT_EQ(valuesAt(camera, 0.25).fieldOfView, 45);
}

} // namespace
} // namespace velm::host::test
