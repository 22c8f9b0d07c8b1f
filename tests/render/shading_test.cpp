// Light on surfaces, against closed forms.
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-6;
using Kind = LightDescription::Kind;

LightDescription light(Kind kind, const Double3 &position, const Double3 &target = {0, 0, 0}) {
    LightDescription description;
    description.name = "Light";
    description.kind = kind;
    description.position = position;
    description.target = target;
    return description;
}

double grey(TestScene &scene) {
    const Vec3 colour = scene.pixel();
    EXPECT_NEAR(colour.y, colour.x, kTolerance);
    return colour.x;
}

TEST(Shading, LuminosityAndColour) {
    TestScene scene = facingPlane({{"Luminosity", 0.5}}, {0.2, 0.4, 2});
    expectNear(scene.pixel(), {0.1, 0.2, 1}, kTolerance);
}

TEST(Shading, AmbientLightIsDiffuse) {
    TestScene scene = facingPlane({{"Diffuse", 0.5}}, {1, 0.5, 0});
    scene.description.render.ambientIntensity = 0.8;
    scene.description.render.ambientColour = {1, 0.5, 1};
    expectNear(scene.pixel(), {0.4, 0.1, 0}, kTolerance);
}

TEST(Shading, PointLightFallsOffWithTheSquare) {
    for (const double distance : {0.5, 1.0, 2.0, 4.0}) {
        TestScene scene = facingPlane({{"Diffuse", 1}});
        scene.description.lights.push_back(light(Kind::point, {0, 0, -distance}));
        scene.description.lights[0].intensity = 0.7;
        EXPECT_NEAR(grey(scene), 0.7 / (distance * distance), kTolerance) << distance;
    }
}

TEST(Shading, FalloffDependsOnTheRange) {
    using Falloff = LightDescription::Falloff;
    constexpr double kRange = 3;
    for (const Kind kind : {Kind::point, Kind::spot, Kind::area}) {
        for (const double distance : {0.5, 2.0, 5.0}) {
            const std::pair<Falloff, double> kExpected[] = {
                {Falloff::none, 1},
                {Falloff::linear, std::max(0.0, 1 - distance / kRange)},
                {Falloff::inverseDistance, kRange / distance},
                {Falloff::inverseSquare, kRange * kRange / (distance * distance)}};
            for (const auto &[falloff, factor] : kExpected) {
                TestScene scene = facingPlane({{"Diffuse", 1}});
                LightDescription lamp = light(kind, {0, 0, -distance});
                lamp.falloff = falloff;
                lamp.range = kRange;
                lamp.intensity = 0.7;
                lamp.width = lamp.height = 1e-5;
                scene.description.lights.push_back(lamp);
                EXPECT_NEAR(grey(scene), 0.7 * factor, 1e-5) << static_cast<int>(falloff) << " at " << distance;
            }
        }
    }
}

// A spot light at a distance of one metre from the centre of the plane. The axis of its cone makes an angle of `angle`
// degrees with the direction to the centre.
TEST(Shading, SpotLightsShineInACone) {
    constexpr double kCone = 30, kEdge = 10;
    for (const double angle : {0.0, 19.0, 22.0, 25.0, 28.0, 31.0, 170.0}) {
        TestScene scene = facingPlane({{"Diffuse", 1}});
        LightDescription spot = light(Kind::spot, {0, 0, -1});
        spot.cone = kCone;
        spot.edge = kEdge;
        spot.hasTarget = false;
        spot.rotation = {angle, 0, 0};
        scene.description.lights.push_back(spot);
        const double x = std::clamp((kCone - angle) / kEdge, 0.0, 1.0);
        EXPECT_NEAR(grey(scene), x * x * (3 - 2 * x), kTolerance) << angle;
    }
}

TEST(Shading, SpotLightsMayHaveAHardEdge) {
    for (const double angle : {29.9, 30.1}) {
        TestScene scene = facingPlane({{"Diffuse", 1}});
        LightDescription spot = light(Kind::spot, {0, 0, -1});
        spot.cone = 30;
        spot.edge = 0;
        spot.hasTarget = false;
        spot.rotation = {0, angle, 0};
        scene.description.lights.push_back(spot);
        EXPECT_NEAR(grey(scene), angle < 30 ? 1 : 0, kTolerance) << angle;
    }
}

// An area light whose width is scaled by 3 gives the same light as one that is three times as wide.
TEST(Shading, ScaleEnlargesAreaLights) {
    const auto lit = [](const Double3 &scale, double width) {
        TestScene scene = facingPlane({{"Diffuse", 1}});
        LightDescription area = light(Kind::area, {0, 0, -2});
        area.scale = scale;
        area.width = width;
        area.height = 0.5;
        scene.description.lights.push_back(area);
        return grey(scene);
    };
    EXPECT_NEAR(lit({3, 1, 1}, 0.5), lit({1, 1, 1}, 1.5), kTolerance);
    EXPECT_GT(std::fabs(lit({3, 1, 1}, 0.5) - lit({1, 1, 1}, 0.5)), 1e-3);
}

TEST(Shading, LightsGoByTheCosine) {
    for (const double degrees : {0.0, 30.0, 60.0, 85.0}) {
        const double angle = degrees * kPi / 180;
        TestScene scene = facingPlane({{"Diffuse", 1}});
        scene.description.lights.push_back(light(Kind::point, {std::sin(angle), 0, -std::cos(angle)}));
        EXPECT_NEAR(grey(scene), std::cos(angle), kTolerance) << "point at " << degrees;
        TestScene far = facingPlane({{"Diffuse", 1}});
        far.description.lights.push_back(light(Kind::distant, {0, 3 * std::sin(angle), -3 * std::cos(angle)}));
        EXPECT_NEAR(grey(far), std::cos(angle), kTolerance) << "distant at " << degrees;
    }
}

TEST(Shading, LightsFromBehindAndAtThePlaceItselfDoNothing) {
    TestScene scene = facingPlane({{"Diffuse", 1}, {"Specular", 1}});
    scene.description.lights.push_back(light(Kind::point, {0, 0, 1}));
    scene.description.lights.push_back(light(Kind::distant, {0, 0, 1}));
    scene.description.lights.push_back(light(Kind::point, {0, 0, 0}));
    EXPECT_EQ(grey(scene), 0);
}

// The irradiance of a rectangle at a facing point on its axis (a standard form factor):
// E = (2 / pi) [a / sqrt(1 + a a) atan(b / sqrt(1 + a a)) + b / sqrt(1 + b b) atan(a / sqrt(1 + b b))] with a, b half
// the sides over the distance, for a radiance of 1 / pi; here the whole of a small light at 1 m counts as 1.
double rectangle(double width, double height, double distance) {
    const double a = width / 2 / distance, b = height / 2 / distance, ra = std::sqrt(1 + a * a),
                 rb = std::sqrt(1 + b * b);
    const double factor = 2 / kPi * (a / ra * std::atan(b / ra) + b / rb * std::atan(a / rb));
    return factor * kPi / (width * height);
}

TEST(Shading, AreaLightIsARectangle) {
    for (const double distance : {0.5, 1.0, 3.0}) {
        TestScene scene = facingPlane({{"Diffuse", 1}});
        LightDescription area = light(Kind::area, {0, 0, -distance});
        area.width = 2;
        area.height = 1;
        area.samples = 4096;
        scene.description.lights.push_back(area);
        EXPECT_NEAR(grey(scene), rectangle(2, 1, distance), 2e-3 * rectangle(2, 1, distance)) << distance;
    }
}

TEST(Shading, SmallAreaLightIsLikeAPoint) {
    TestScene scene = facingPlane({{"Diffuse", 1}});
    LightDescription area = light(Kind::area, {0, 0, -1});
    area.width = area.height = 1e-3;
    area.samples = 4;
    scene.description.lights.push_back(area);
    EXPECT_NEAR(grey(scene), 1, 1e-5);
    TestScene averted = facingPlane({{"Diffuse", 1}});
    area.target = {0, 0, -5};
    averted.description.lights.push_back(area);
    EXPECT_EQ(grey(averted), 0) << "it shines to one side";
}

TEST(Shading, ShadowsAreProductsOfTransparencies) {
    struct ShadowCase {
        const char *what;
        double first, second; // transparencies of two panes between the plane and the light
        bool shadows, casts;
        double expected;
    };
    const ShadowCase cases[] = {
        {"opaque", 0, 1, true, true, 0},
        {"clear", 1, 1, true, true, 1},
        {"two panes", 0.5, 0.25, true, true, 0.125},
        {"overdriven", 3, 1, true, true, 1},
        {"no shadows from the light", 0, 0, false, true, 1},
        {"objects that cast none", 0, 0, true, false, 1},
    };
    for (const ShadowCase &each : cases) {
        TestScene scene = facingPlane({{"Diffuse", 1}});
        scene.surface("First", {{"Transparency", each.first}});
        scene.surface("Second", {{"Transparency", each.second}});
        for (const char *name : {"First", "Second"}) {
            ObjectDescription &pane =
                scene.object(name, PlaneShape{}, name, {0, name[0] == 'F' ? 2.0 : 3.0, name[0] == 'F' ? -2.0 : -3.0});
            pane.castsShadows = each.casts;
        }
        LightDescription sun = light(Kind::distant, {0, 1, -1});
        sun.shadows = each.shadows;
        scene.description.lights.push_back(sun);
        EXPECT_NEAR(grey(scene), each.expected * std::sqrt(0.5), kTolerance) << each.what;
    }
}

// From polygons that are triangles, shadow rays use Embree's faster occlusion test.
TEST(Shading, TrianglesGetTheSameShadows) {
    const TemporaryDirectory directory;
    writeText(directory / "triangle.obj", "v -9 -9 0\nv 9 -9 0\nv 0 18 0\nf 1 2 3\n");
    for (const double transparency : {0.0, 0.25, 1.0}) {
        for (const bool doubleSided : {true, false}) {
            TestScene scene;
            scene.surface("Plane", {{"Diffuse", 1}});
            scene.object("Plane", MeshFile{directory / "triangle.obj"}, "Plane");
            scene.surface("Pane", {{"Transparency", transparency}}).doubleSided = doubleSided;
            scene.object("Pane", PlaneShape{}, "Pane", {0, 2, -2}); // its back faces the plane
            scene.description.lights.push_back(light(Kind::distant, {0, 1, -1}));
            scene.description.lights.push_back(light(Kind::distant, {1, 0, -1}));
            EXPECT_NEAR(grey(scene), (1 + (doubleSided ? transparency : 1)) * std::sqrt(0.5), kTolerance)
                << transparency << ", " << doubleSided;
        }
    }
}

TEST(Shading, WhatStandsBehindALightCastsNoShadow) {
    TestScene scene = facingPlane({{"Diffuse", 1}});
    scene.surface("Pane");
    scene.object("Pane", PlaneShape{}, "Pane", {0, 3, -3});
    scene.description.lights.push_back(light(Kind::point, {0, 2, -2}));
    EXPECT_NEAR(grey(scene), std::sqrt(0.5) / 8, kTolerance);
}

TEST(Shading, SpecularIsBlinnsHighlight) {
    for (const double glossiness : {0.0, 0.2, 0.5}) {
        const double exponent = std::pow(2, 10 * glossiness + 2), angle = 20 * kPi / 180;
        TestScene scene = facingPlane({{"Specular", 0.5}, {"Glossiness", glossiness}}, {1, 0, 0});
        LightDescription sun = light(Kind::distant, {std::sin(angle), 0, -std::cos(angle)});
        sun.colour = {0.5, 0.5, 0.5};
        scene.description.lights.push_back(sun);
        // The half vector lies 10 degrees off the normal; the highlight has the light's colour.
        EXPECT_NEAR(grey(scene), 0.25 * std::pow(std::cos(angle / 2), exponent), kTolerance) << glossiness;
    }
}

TEST(Shading, TransparencyTakesFromTheSurfacesOwnColour) {
    TestScene scene = facingPlane({{"Luminosity", 1}, {"Transparency", 0.25}}, {1, 1, 1});
    expectNear(scene.pixel(), {0.75 + 0.25 * 0.25, 0.75 + 0.25 * 0.5, 0.75 + 0.25 * 0.75}, kTolerance);
}

TEST(Shading, NormalFromTheNetworkIsUsed) {
    TestScene scene = facingPlane({{"Diffuse", 1}});
    scene.probe("Plane", "Normal", [](ShadingSample &sample, double *value) {
        expectNear(Vec3(sample.shadingNormal), {0, 0, -1}, kTolerance);
        value[0] = 0;
        value[1] = 3;
        value[2] = -3;
    });
    scene.description.lights.push_back(light(Kind::distant, {0, 0, -1}));
    EXPECT_NEAR(grey(scene), std::sqrt(0.5), kTolerance);
}

TEST(Shading, PenumbraOfAnAreaLightIsHalfWay) {
    // A half plane above the axis occludes the upper half of the light, as seen from the centre of the plane.
    TestScene scene = facingPlane({{"Diffuse", 1}});
    scene.surface("Screen");
    scene.object("Screen", PlaneShape{.width = 40, .depth = 2}, "Screen", {0, 1, -5}).rotation = {0, 90, 0};
    scene.description.objects.back().seenByCamera = false;
    LightDescription area = light(Kind::area, {0, 0, -10});
    area.samples = 256;
    scene.description.lights.push_back(area);
    EXPECT_NEAR(grey(scene), 0.5 * rectangle(1, 1, 10), 0.01 * rectangle(1, 1, 10));
}

} // namespace
} // namespace velm::host::test
