#include "host/open/mesh_scene.h"

#include "host/base/angles.h"
#include "host/open/mesh_bounds.h"
#include "host/open/new_names.h"
#include "host/render/scene/lights.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velm::host {

namespace {

// Gives an item the name, position and rotation that it has in the file, and no target. `defaultName` is for items
// without a name.
template <class Item>
void place(const Item &from, const std::string &defaultName, UnusedNames &names, const SceneDescription &scene,
           ItemDescription &item) {
    item.name = names.take(writableName(from.name.empty() ? defaultName : from.name));
    item.position = from.position;
    item.rotation = from.rotation;
    item.hasTarget = false;
    item.location.file = scene.file;
}

CameraDescription cameraOf(const MeshCamera &from, double aspect) {
    CameraDescription camera;
    const double halfWidth = std::max(from.halfWidth, from.halfHeight * aspect);
    if (halfWidth > 0) camera.fieldOfView = 2 * std::atan(halfWidth) * kDegreesPerRadian;
    return camera;
}

// In the file, the intensity is divided by a sum of powers of the distance. A light of a scene has a single power: the
// one that is nearest to the sum at `distance`, with the same value there.
void setFalloff(const MeshLight &from, double distance, LightDescription &light) {
    const auto &[constant, linear, square] = from.attenuation;
    if (constant == 0 && square == 0 && linear > 0) distance = 1 / linear; // exact at all distances
    if (constant == 0 && linear == 0 && square > 0) distance = 1 / std::sqrt(square);
    const double sum = constant + linear * distance + square * distance * distance;
    light.falloff = LightDescription::Falloff::none;
    if (!(sum > 1e-30) || !std::isfinite(sum)) return; // no usable decrease
    light.intensity /= sum;
    const double power = (linear * distance + 2 * square * distance * distance) / sum;
    if (power < 0.5) return;
    light.falloff = power < 1.5 ? LightDescription::Falloff::inverseDistance : LightDescription::Falloff::inverseSquare;
    light.range = distance;
}

LightDescription lightOf(const MeshLight &from, const Vec3 &centre) {
    LightDescription light;
    light.colour = from.colour;
    light.intensity = from.intensity;
    switch (from.kind) {
    case MeshLight::Kind::point: light.kind = LightDescription::Kind::point; break;
    case MeshLight::Kind::spot: light.kind = LightDescription::Kind::spot; break;
    case MeshLight::Kind::distant:
    case MeshLight::Kind::ambient: return light;
    }
    light.cone = from.cone;
    light.edge = from.edge;
    setFalloff(from, length(Vec3(from.position) - centre), light);
    return light;
}

// Adds light to the ambient light of a scene.
void addAmbient(const MeshLight &light, RenderDescription &render) {
    const Vec3 sum = render.ambientIntensity * Vec3(render.ambientColour) + light.intensity * Vec3(light.colour);
    render.ambientIntensity = largest(sum);
    if (render.ambientIntensity > 0) (1 / render.ambientIntensity * sum).store(render.ambientColour.data());
}

// The light that a surface at `location` receives if it faces the light. The cone of a spot light is ignored.
double facingLight(LightDescription light, const Vec3 &location) {
    if (light.kind == LightDescription::Kind::spot) light.kind = LightDescription::Kind::point;
    LightSample sample;
    return Light(light).sample(location, nullptr, {.x = 0.5, .y = 0.5}, sample) ? largest(sample.colour) : 0;
}

} // namespace

void addCamerasAndLights(const Mesh &mesh, SceneDescription &scene) {
    UnusedNames cameraNames = unusedNamesBeside(scene.cameras), lightNames = unusedNamesBeside(scene.lights);
    for (const MeshCamera &from : mesh.cameras) {
        CameraDescription camera = cameraOf(from, pictureAspect(scene.render));
        place(from, "Camera", cameraNames, scene, camera);
        scene.cameras.push_back(std::move(camera));
    }
    if (mesh.lights.empty()) return;
    const Vec3 centre = centreOf(boundsOf(mesh));
    for (const MeshLight &from : mesh.lights) {
        if (from.kind == MeshLight::Kind::ambient) {
            addAmbient(from, scene.render);
            continue;
        }
        LightDescription light = lightOf(from, centre);
        place(from, "Light", lightNames, scene, light);
        scene.lights.push_back(std::move(light));
    }
}

double exposeLights(const Bounds &bounds, SceneDescription &scene) {
    constexpr double kDarkest = 0.25, kBrightest = 4;
    const Vec3 centre = centreOf(bounds);
    double sum = scene.render.ambientIntensity;
    for (const LightDescription &light : scene.lights) sum += facingLight(light, centre);
    if (!(sum > 0) || !std::isfinite(sum) || (sum >= kDarkest && sum <= kBrightest)) return 1;
    scene.render.ambientIntensity /= sum;
    for (LightDescription &light : scene.lights) light.intensity /= sum;
    return 1 / sum;
}

} // namespace velm::host
