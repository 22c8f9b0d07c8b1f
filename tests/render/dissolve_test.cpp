// Objects that are partly dissolved.
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6; // of single precision

// A ball of a colour, which both of its sides show, at a depth.
ObjectDescription &ball(TestScene &scene, const std::string &name, const Double3 &colour, double depth,
                        double dissolve) {
    scene.surface(name, {{"Luminosity", 1}}, colour);
    ObjectDescription &object = scene.object(name, SphereShape{}, name, {0, 0, depth});
    object.dissolve = dissolve;
    return object;
}

TEST(Dissolve, MixesAnObjectWithTheBackdrop) {
    TestScene scene;
    ball(scene, "Ball", {1, 0, 0}, 0, 0.75);
    const Frame frame = scene.render();
    const float *pixel = frame.picture.pixel(0, 0);
    expectNear({pixel[0], pixel[1], pixel[2]}, Vec3{0.25, 0, 0} + 0.75 * Vec3{0.25, 0.5, 0.75}, kTolerance);
    EXPECT_NEAR(pixel[3], 0.25, kTolerance) << "alpha";
}

TEST(Dissolve, MixesAnObjectWithThoseBehindIt) {
    TestScene scene;
    ball(scene, "Red", {1, 0, 0}, 0, 0.25);
    ball(scene, "Green", {0, 1, 0}, 0.5, 0.5); // in part within the first one
    ball(scene, "Blue", {0, 0, 1}, 9, 0);
    expectNear(scene.pixel(), {0.75, 0.25 * 0.5, 0.25 * 0.5}, kTolerance);
    EXPECT_EQ(scene.render().picture.pixel(0, 0)[3], 1) << "nothing of the backdrop";
}

TEST(Dissolve, ShowsInMirrors) {
    TestScene scene;
    scene.surface("Mirror", {{"Reflection", 1}}, {0, 0, 0});
    scene.object("Mirror", BoxShape{.size = {4, 4, 2}}, "Mirror", {0, 0, 1});
    ball(scene, "Ball", {1, 0, 0}, -8, 0.75);
    expectNear(scene.pixel(), Vec3{0.25, 0, 0} + 0.75 * Vec3{0.25, 0.5, 0.75}, kTolerance);
}

// The plane is lit from behind the ball.
TEST(Dissolve, ShadowsFadeAsAWhole) {
    for (const double transparency : {0.0, 0.5}) {
        TestScene scene;
        scene.surface("Wall", {{"Diffuse", 1}});
        scene.object("Wall", BoxShape{.size = {9, 9, 1}}, "Wall", {0, 0, 0.5});
        scene.surface("Ball", {{"Transparency", transparency}});
        ObjectDescription &ball = scene.object("Ball", SphereShape{}, "Ball", {0, 0, -2});
        ball.seenByCamera = false;
        ball.dissolve = 0.25;
        LightDescription &sun = scene.description.lights.emplace_back();
        sun.position = {0, 0, -9};
        const double light = 0.25 + 0.75 * transparency * transparency;
        expectNear(scene.pixel(), {light, light, light}, kTolerance, "through both sides of the ball");
    }
}

// More objects along a ray than are stored without allocating memory. Each attenuates the colour behind it, and casts a
// partial shadow.
TEST(Dissolve, ManyObjectsAlongARayAreMixed) {
    constexpr int kObjects = 40;
    constexpr double kDissolve = 0.95;
    TestScene scene;
    scene.description.backdrop.colour = {1, 1, 1};
    scene.surface("Black");
    for (int i = 0; i < kObjects; ++i)
        scene.object("Ball " + std::to_string(i), SphereShape{}, "Black", {0, 0, 0.01 * i}).dissolve = kDissolve;
    const double light = std::pow(kDissolve, kObjects);
    expectNear(scene.pixel(), {light, light, light}, kTolerance);
    scene.surface("Receiver", {{"Diffuse", 1}});
    scene.object("Receiver", BoxShape{.size = {9, 9, 1}}, "Receiver", {0, 0, 5});
    LightDescription &sun = scene.description.lights.emplace_back();
    sun.position = {0, 0, -9};
    for (ObjectDescription &object : scene.description.objects) object.seenByCamera = object.name == "Receiver";
    scene.update();
    expectNear(scene.pixel(), {light, light, light}, kTolerance, "their shadows");
}

// A ray within the ball meets its other side as if the ball was not dissolved.
TEST(Dissolve, ObjectsAreWholeForTheirOwnRays) {
    TestScene scene;
    scene.description.backdrop.colour = {1, 1, 1};
    scene.surface("Glass", {{"Transparency", 0.5}}, {0, 0, 0});
    scene.object("Ball", SphereShape{}, "Glass").dissolve = 0.25;
    const double light = 0.25 + 0.75 * 0.5 * 0.5;
    expectNear(scene.pixel(), {light, light, light}, kTolerance);
}

TEST(Dissolve, IsThatOfTheTime) {
    TestScene scene;
    scene.description.render.framesPerSecond = 1;
    scene.description.render.firstFrame = 0;
    ball(scene, "Ball", {1, 0, 0}, 0, 0)
        .channels.push_back(
            {.channel = Channel::dissolve,
             .component = 0,
             .keys = {.components = 1, .keys = {{.time = 0}, {.time = 4, .value = {1, 0, 0}, .shape = kShapeLinear}}}});
    scene.description.backdrop.colour = {0, 0, 0};
    for (const int frame : {0, 1, 3, 4}) {
        scene.renderScene().setTime(scene.description, frame, scene.lookup());
        EXPECT_NEAR(scene.pixel().x, 1 - frame / 4.0, kTolerance) << frame;
    }
}

TEST(Dissolve, ARayThatKeepsItsColourIsMixedWithIt) {
    TestScene scene;
    ball(scene, "Ball", {1, 0, 0}, 3, 0.75);
    const Vec3 seen = probeAtOrigin(scene, [](ShadingSample &sample, double value[3]) {
        const double direction[3] = {0, 0, 1};
        double colour[3] = {0, 0, 0.5};
        sample.rayTraceMode(sample.position, direction, colour, 1, kTraceReflection | kTraceUseBackdropColour);
        std::copy_n(colour, 3, value);
    });
    expectNear(seen, {0.25, 0, 0.375}, kTolerance);
}

} // namespace
} // namespace velm::host::test
