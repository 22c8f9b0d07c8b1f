#include "host/open/rig.h"

#include "host/open/mesh_bounds.h"
#include "host/render/scene/camera.h"

#include <algorithm>

namespace velm::host {

namespace {

// Half the diagonal of the bounds: the radius of a sphere around them.
double radiusOf(const Bounds &bounds) {
    const auto &side = bounds.sides;
    return length(Vec3{side[0][1] - side[0][0], side[1][1] - side[1][0], side[2][1] - side[2][0]}) / 2;
}

Double3 stored(const Vec3 &vector) { return {vector.x, vector.y, vector.z}; }

Camera viewing(const CameraDescription &camera) { return {camera, 1, 1}; }

// Horizontal axes that the lights follow: to the right of the camera, and away from it.
struct Axes {
    Vec3 right, away, up;

    explicit Axes(const CameraDescription &camera) : up{0, looksUpwards(camera) ? -1.0 : 1.0, 0} {
        const CameraView view = viewing(camera).view();
        const Vec3 upright{0, 1, 0};
        away = normalised(cross(Vec3{view.matrix[0], view.matrix[1], view.matrix[2]}, upright));
        right = cross(upright, away);
    }
    Vec3 along(const Vec3 &place) const { return place.x * right + place.y * up + place.z * away; }
};

struct StudioLight {
    const char *name;
    Vec3 place;         // to the right of the camera, up, and away from it, in radii from the middle of the bounds
    double size;        // in radii
    double illuminance; // of a facing surface in the middle of the bounds
    Double3 colour;
};

// The key light is at the left of the camera, the fill light at its right, and the rim light behind the object.
struct StudioLevels {
    double ambient, lights; // factors of ambient light and of the illuminances above
    double ground;          // grey of its surface

    // The colour of the distant ground, which only ambient light reaches, so that no horizon is visible.
    Double3 backdrop() const { return {ground * ambient, ground * ambient, ground * ambient}; }
};

// The classic workflow applies no curve to the picture: with the levels of the linear workflow, shadows, ground and
// backdrop would look much darker.
constexpr StudioLevels kLinearStudio{.ambient = 0.2, .lights = 1, .ground = 0.6};
constexpr StudioLevels kClassicStudio{.ambient = 0.45, .lights = 0.6, .ground = 0.85};

const StudioLevels &levelsFor(Workflow workflow) {
    return workflow == Workflow::linear ? kLinearStudio : kClassicStudio;
}

Lighting studio(const Bounds &bounds, const Axes &axes, const StudioLevels &levels) {
    const StudioLight kLights[] = {
        {.name = "Key", .place = {-1.8, 2.6, -2.4}, .size = 2, .illuminance = 0.75, .colour = {1, 0.98, 0.95}},
        {.name = "Fill", .place = {2.8, 1.2, -2.2}, .size = 3, .illuminance = 0.25, .colour = {0.92, 0.96, 1}},
        {.name = "Rim", .place = {1.2, 2.8, 2.4}, .size = 1.5, .illuminance = 0.5, .colour = {1, 1, 1}}};
    const Vec3 centre = centreOf(bounds);
    const double radius = radiusOf(bounds);
    Lighting lighting;
    for (const StudioLight &each : kLights) {
        const double distance = radius * length(each.place);
        LightDescription light;
        light.kind = LightDescription::Kind::area;
        light.name = each.name;
        light.position = stored(centre + radius * axes.along(each.place));
        light.target = stored(centre);
        light.colour = each.colour;
        light.intensity = levels.lights * each.illuminance * distance * distance;
        light.width = light.height = radius * each.size;
        light.samples = 4;
        lighting.lights.push_back(light);
    }
    lighting.ambientIntensity = levels.ambient;
    lighting.groundColour = {levels.ground, levels.ground, levels.ground};
    lighting.backdrop.colour = levels.backdrop();
    return lighting;
}

Lighting outdoor(const Bounds &bounds, const Axes &axes) {
    const Vec3 toSun = normalised(axes.along({-0.6, 0.9, -0.5}));
    const Vec3 sunColour{1, 0.95, 0.86}, skyColour{0.75, 0.87, 1}, groundColour{0.36, 0.35, 0.32};
    constexpr double kSun = 0.85, kSky = 0.3;
    const Vec3 centre = centreOf(bounds);
    Lighting lighting;
    LightDescription sun;
    sun.kind = LightDescription::Kind::distant;
    sun.name = "Sun";
    sun.position = stored(centre + radiusOf(bounds) * toSun);
    sun.target = stored(centre);
    sun.colour = stored(sunColour);
    sun.intensity = kSun;
    lighting.lights.push_back(sun);
    lighting.ambientColour = stored(skyColour);
    lighting.ambientIntensity = kSky;
    lighting.groundColour = stored(groundColour);
    lighting.backdrop.kind = BackdropDescription::Kind::gradient;
    // Below the horizon, the backdrop looks as the lit ground does.
    const Vec3 lit = groundColour * (kSun * std::max(0.0, toSun.y) * sunColour + kSky * skyColour);
    lighting.backdrop.ground = lighting.backdrop.nadir = stored(lit);
    return lighting;
}

} // namespace

bool looksUpwards(const CameraDescription &camera) {
    constexpr double kSteep = 0.5; // the sine of 30 degrees
    return viewing(camera).forward().y > kSteep;
}

Lighting lightingOf(Rig rig, const Bounds &bounds, const CameraDescription &camera, Workflow workflow) {
    switch (rig) {
    case Rig::studio: return studio(bounds, Axes(camera), levelsFor(workflow));
    case Rig::outdoor: return outdoor(bounds, Axes(camera));
    case Rig::none: break;
    }
    Lighting unlit;
    unlit.backdrop.colour = levelsFor(workflow).backdrop();
    return unlit;
}

ObjectDescription groundBelow(const Bounds &bounds) {
    constexpr double kWidth = 400, kGap = 0.002; // in radii; without the gap, the ground would meet flat objects
    const double radius = radiusOf(bounds);
    const Vec3 centre = centreOf(bounds);
    ObjectDescription ground;
    ground.shape = PlaneShape{.width = kWidth * radius, .depth = kWidth * radius};
    ground.position = {centre.x, bounds.sides[1][0] - kGap * radius, centre.z};
    return ground;
}

} // namespace velm::host
