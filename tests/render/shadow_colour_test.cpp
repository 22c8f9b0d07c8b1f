// Shadows of transparent surfaces, with and without their colour.
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;

// A white plane that is lit at normal incidence, through panes that are invisible to the camera.
struct ShadowColour : testing::Test {
    ShadowColour() {
        LightDescription &sun = scene.description.lights.emplace_back();
        sun.name = "Sun";
        sun.position = {0, 0, -9};
        sun.colour = {1, 0.5, 0.25};
        sun.colouredShadows = true;
    }
    ObjectDescription &pane(const std::string &name, double transparency, const Double3 &colour) {
        scene.surface(name, {{"Transparency", transparency}}, colour);
        ObjectDescription &object =
            scene.object(name, PlaneShape{}, name, {0, 0, -static_cast<double>(scene.description.objects.size())});
        object.rotation = {0, 90, 0};
        object.seenByCamera = false;
        return object;
    }
    LightDescription &sun() { return scene.description.lights[0]; }

    TestScene scene = facingPlane({{"Diffuse", 1}});
};

TEST_F(ShadowColour, DependsOnTheOptionOfTheLight) {
    pane("Red", 0.5, {1, 0.5, 0});
    expectNear(scene.pixel(), {0.5, 0.125, 0}, kTolerance);
    sun().colouredShadows = false;
    scene.update();
    expectNear(scene.pixel(), {0.5, 0.25, 0.125}, kTolerance);
    sun().colouredShadows = true;
    sun().shadows = false;
    scene.update();
    expectNear(scene.pixel(), {1, 0.5, 0.25}, kTolerance);
}

TEST_F(ShadowColour, MultipliesAlongTheRay) {
    pane("Red", 0.5, {1, 0.5, 1});
    pane("Blue", 1, {0.25, 1, 1});
    pane("Bright", 1, {9, 9, 9});
    pane("Odd", 1, {1, 1, 1});
    scene.probe("Odd", "Color", [](ShadingSample &, double value[3]) {
        value[0] = 1;
        value[1] = -1;
        value[2] = NAN;
    });
    expectNear(scene.pixel(), {0.5 * 0.25, 0, 0}, kTolerance, "components are from 0 to 1");
}

TEST_F(ShadowColour, DissolvedSurfacesPassTheirDissolveUncoloured) {
    pane("Red", 0.5, {1, 0.5, 0}).dissolve = 0.2;
    expectNear(scene.pixel(), {0.2 + 0.8 * 0.5, 0.5 * (0.2 + 0.8 * 0.25), 0.25 * 0.2}, kTolerance);
}

TEST_F(ShadowColour, OpaqueSurfacesPassNoLight) {
    pane("Red", 0, {1, 0.5, 0});
    pane("Clear", 1, {1, 1, 1});
    expectNear(scene.pixel(), {0, 0, 0}, kTolerance);
}

TEST_F(ShadowColour, ComesFromTheNetwork) {
    pane("Red", 1, {1, 1, 1});
    scene.probe("Red", "Color", [](ShadingSample &sample, double value[3]) {
        EXPECT_TRUE((sample.rayFlags & kRayShadow) != 0);
        value[0] = 0.75;
        value[1] = 0.5;
        value[2] = 0;
    });
    expectNear(scene.pixel(), {0.75, 0.25, 0}, kTolerance);
}

} // namespace
} // namespace velm::host::test
