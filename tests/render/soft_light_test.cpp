// Area and linear lights, against closed forms.
#include "tests/render/test_scene.h"

#include <algorithm>
#include <array>

namespace velm::host::test {
namespace {

using Kind = LightDescription::Kind;

LightDescription lamp(Kind kind, const Double3 &position, const Double3 &rotation = {}) {
    LightDescription light;
    light.kind = kind;
    light.position = position;
    light.hasTarget = false;
    light.rotation = rotation;
    light.samples = 4096;
    return light;
}

// The irradiance that a polygon of radiance 1 causes at the origin, on a surface with the normal -Z. All of the polygon
// has to be above that surface's horizon. By Lambert's formula (Baum, Rushmeier and Winget, "Improving Radiosity
// Solutions Through the Use of Analytically Determined Form-Factors", 1989).
double irradianceOf(const std::array<Vec3, 4> &corners) {
    double sum = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Vec3 a = normalised(corners[i]), b = normalised(corners[(i + 1) % corners.size()]);
        sum += std::acos(dot(a, b)) * normalised(cross(a, b)).z;
    }
    return std::fabs(sum) / 2;
}

TEST(SoftLight, AreaLightsMatchLambertsFormula) {
    constexpr double kTolerance = 3e-3; // relative, of 4096 samples
    constexpr double kWidth = 2, kHeight = 1.5;
    const struct {
        Double3 position, rotation;
    } kPlaces[] = {{{0, 0, -2}, {0, 0, 0}}, {{1.5, 0.5, -2}, {0, 0, 0}}, {{-1, 1, -3}, {30, 20, 10}}};
    for (const auto &place : kPlaces) {
        LightDescription light = lamp(Kind::area, place.position, place.rotation);
        light.width = kWidth;
        light.height = kHeight;
        const Matrix turn = rotationMatrix(place.rotation);
        const auto corner = [&](double x, double y) {
            return Vec3(place.position) + turn * Vec3{x * kWidth / 2, y * kHeight / 2, 0};
        };
        // A small light of the intensity 1 has the radiance 1 / area.
        const double expected =
            irradianceOf({corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)}) / (kWidth * kHeight);
        EXPECT_NEAR(litPlane(light).pixel().x, expected, kTolerance * expected) << place.position[0];
    }
}

// The integral of h^2 / (h^2 + x^2)^2 from 0 to x: the irradiance at a point of a plane due to a line segment that is
// parallel to the plane, at the distance h. It starts at the foot of the perpendicular and has the length x. The
// integrand is the product of the sine of the angle at the line, the cosine of the angle of incidence, and the inverse
// square of the distance.
double partOfLine(double x, double h) { return x / (2 * (x * x + h * h)) + std::atan(x / h) / (2 * h); }

TEST(SoftLight, LinearLightsMatchTheIntegralAlongTheLine) {
    constexpr double kTolerance = 1e-3; // relative, of 4096 samples
    for (const double distance : {0.5, 1.0, 4.0}) {
        for (const double offset : {0.0, 0.75, 3.0}) {
            LightDescription light = lamp(Kind::linear, {offset, 0, -distance});
            light.length = 2;
            const double expected =
                (partOfLine(offset + 1, distance) - partOfLine(offset - 1, distance)) / light.length;
            EXPECT_NEAR(litPlane(light).pixel().x, expected, kTolerance * expected) << distance << ", " << offset;
        }
    }
}

TEST(SoftLight, LinearLightsAreTubes) {
    constexpr double kTolerance = 1e-5;
    LightDescription light = lamp(Kind::linear, {0, 0, -1});
    light.length = 1e-3;
    EXPECT_NEAR(litPlane(light).pixel().x, 1, kTolerance) << "perpendicular to the line";
    light.rotation = {60, 0, 0};
    EXPECT_NEAR(litPlane(light).pixel().x, 0.5, kTolerance) << "the sine of 30 degrees";
    light.rotation = {90, 0, 0};
    EXPECT_NEAR(litPlane(light).pixel().x, 0, kTolerance) << "along the line";
    light.rotation = {0, 0, 70};
    EXPECT_NEAR(litPlane(light).pixel().x, 1, kTolerance)
        << "rotated about the axis through the light and the lit point";
    light.rotation = {0, 180, 0};
    EXPECT_NEAR(litPlane(light).pixel().x, 1, kTolerance) << "emission does not depend on the angle about the line";
}

TEST(SoftLight, ScaleLengthensLinearLights) {
    constexpr double kTolerance = 1e-6;
    const auto lit = [](double scale, double length) {
        LightDescription light = lamp(Kind::linear, {0, 0, -1});
        light.samples = 16;
        light.scale = {scale, 1, 1};
        light.length = length;
        return litPlane(light).pixel().x;
    };
    EXPECT_NEAR(lit(3, 0.5), lit(1, 1.5), kTolerance);
    EXPECT_GT(std::fabs(lit(3, 0.5) - lit(1, 0.5)), 1e-2);
}

// A screen half way between the light and the plane occludes the half space x > edge. As seen from the centre of the
// plane, the part of the light with x > 2 * edge is occluded. The light is unoccluded for edge > kLength / 4, and
// wholly occluded for edge < -kLength / 4.
TEST(SoftLight, PenumbraMatchesTheVisiblePartOfTheLight) {
    constexpr double kTolerance = 2e-3, kDistance = 8, kLength = 2;
    for (const double edge : {-0.6, -0.45, -0.2, 0.0, 0.3, 0.6}) {
        LightDescription light = lamp(Kind::linear, {0, 0, -kDistance});
        light.length = kLength;
        light.intensity = kDistance * kDistance;
        TestScene scene = litPlane(light);
        scene.surface("Screen");
        ObjectDescription &screen =
            scene.object("Screen", PlaneShape{.width = 10, .depth = 10}, "Screen", {edge + 5, 0, -kDistance / 2});
        screen.rotation = {0, 90, 0};
        screen.seenByCamera = false;
        const double end = std::clamp(2 * edge, -kLength / 2, kLength / 2);
        const double expected = light.intensity / kLength * (partOfLine(end, kDistance) - partOfLine(-1, kDistance));
        EXPECT_NEAR(scene.pixel().x, expected, kTolerance) << edge;
    }
}

TEST(SoftLight, SizesMayHaveKeys) {
    constexpr double kTolerance = 1e-6;
    const auto lit = [](Kind kind, double size, bool isKeyed) {
        LightDescription light = lamp(kind, {0, 0, -1});
        light.samples = 16;
        const bool isLinear = kind == Kind::linear;
        if (isKeyed)
            light.channels.push_back({.channel = isLinear ? Channel::length : Channel::width,
                                      .component = 0,
                                      .keys = {.components = 1, .keys = {{.time = 0, .value = {size, 0, 0}}}}});
        else
            (isLinear ? light.length : light.width) = size;
        return litPlane(light).pixel().x;
    };
    for (const Kind kind : {Kind::area, Kind::linear}) {
        EXPECT_NEAR(lit(kind, 3, true), lit(kind, 3, false), kTolerance);
        EXPECT_GT(std::fabs(lit(kind, 3, false) - lit(kind, 1, false)), 1e-2);
        EXPECT_NEAR(lit(kind, -3, true), lit(kind, 0, false), kTolerance) << "a curve may pass below 0";
    }
}

} // namespace
} // namespace velm::host::test
