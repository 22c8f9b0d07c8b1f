#include "host/bake/evaluate_point.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/render/tracing/hit.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <vector>

namespace velm::host {
namespace {

constexpr double kNormalDistance = 1; // metres from which a point is seen against its normal

// The camera that a job is rendered from; null if the scene has none of that name.
const RenderCamera *cameraOf(const RenderSceneData &scene, const std::string &name) {
    const auto found = std::ranges::find_if(
        scene.cameras, [&](const RenderCamera &each) { return name.empty() || each.item->name == name; });
    return found == scene.cameras.end() ? nullptr : &*found;
}

[[noreturn]] void failUnknownViewer(const RenderSceneData &scene, const std::string &name) {
    std::vector<std::string> known = {"normal", "camera"};
    for (const RenderCamera &camera : scene.cameras) known.push_back(camera.item->name);
    for (const RenderLight &light : scene.lights)
        if (!light.light.isDome()) known.push_back(light.item->name);
    const std::string near = didYouMean(name, known);
    for (std::string &each : known) each = inQuotes(each);
    throw InputError(fmt::format("points cannot be seen from {}{}{} there are {}", inQuotes(name), near,
                                 near.empty() ? ";" : "", fmt::join(known, ", ")));
}

std::uint16_t surfaceIndex(const RenderSceneData &scene, std::uint32_t object, std::uint32_t triangle) {
    const RenderObject &owner = scene.objects[object];
    return owner.surfaces[owner.mesh->materialNumber(triangle)];
}

} // namespace

Viewer::Viewer(const RenderSceneData &scene, const RenderJob &job, const std::string &name) {
    const RenderCamera *camera = cameraOf(scene, job.camera);
    item_ = camera ? camera->item : nullptr;
    if (name == "normal") return;
    if (name != "camera") camera = name.empty() ? nullptr : cameraOf(scene, name);
    if (camera) {
        from_ = From::position;
        item_ = camera->item;
        position_ = camera->transform.position;
        return;
    }
    const auto light = std::ranges::find_if(scene.lights, [&](const RenderLight &l) { return l.item->name == name; });
    if (light == scene.lights.end() || light->light.isDome()) failUnknownViewer(scene, name);
    from_ = From::light;
    item_ = light->item;
    light_ = &light->light;
}

void Viewer::look(ShadingSample &sample) const {
    const Vec3 position(sample.position), front(sample.geometricNormal);
    Vec3 away;
    switch (from_) {
    case From::normal: away = kNormalDistance * Vec3(sample.shadingNormal); break;
    case From::position: away = position_ - position; break;
    case From::light: away = light_->vectorFrom(position); break;
    }
    if (dot(away, front) < 0) away = mirrored(away, front);
    const double distance = length(away);
    if (!(distance > 0)) away = kNormalDistance * front;
    sample.rayLength = length(away);
    sample.cosine = dot(away, front) / sample.rayLength;
    (position + away).store(sample.raySource);
}

bool PointEvaluator::has(std::uint32_t object, std::uint32_t triangle) const {
    return value_.has(surfaceIndex(scene_, object, triangle));
}

Vec3 PointEvaluator::evaluate(RayState &state, const SurfacePoint &point) const {
    RTCRayHit ray{};
    ray.hit.geomID = point.object;
    ray.hit.primID = point.triangle;
    ray.hit.u = static_cast<float>(point.u);
    ray.hit.v = static_cast<float>(point.v);
    state.origin = {};
    state.origin.spotSize = point.footprint;
    state.origin.item = viewer_.item();
    state.spread = 0;
    ++state.samples;
    ShadingSample sample;
    RayOrigin origin;
    // A direction of length 0 is neither in front of the triangle nor behind it, and so counts as in front.
    fillSample(state, ray, {.direction = {0, 0, 0}, .refractionIndex = 1, .flags = 0}, sample, origin);
    viewer_.look(sample);
    origin.travelled = sample.rayLength;
    const RayOriginScope scope(state, origin);
    return value_.evaluate(state, surfaceIndex(scene_, point.object, point.triangle), sample);
}

} // namespace velm::host
