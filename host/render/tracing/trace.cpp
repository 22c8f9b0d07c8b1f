#include "host/render/tracing/trace.h"

#include "host/base/short_list.h"
#include "host/graph/surface.h"
#include "host/render/tracing/hit.h"

#include <algorithm>
#include <optional>

namespace velm::host {

bool isOpenBack(const RenderSceneData &scene, const RTCRayHit &ray) {
    if (scene.surfaceOf(ray.hit.geomID, ray.hit.primID).doubleSided) return false;
    const RenderObject &object = scene.objects[ray.hit.geomID];
    const auto corner = [&](int which) {
        if (object.motion) return object.motion->corner(ray.hit.primID, which, static_cast<double>(ray.ray.time));
        return object.mesh->corner(ray.hit.primID, which);
    };
    const Vec3 first = corner(0);
    const Vec3 front = cross(corner(1) - first, corner(2) - first);
    return dot(front, {ray.ray.dir_x, ray.ray.dir_y, ray.ray.dir_z}) > 0;
}

namespace {

// Ends just short of a light, so that geometry at the light's own position casts no shadow.
float reach(double distance) {
    constexpr double kJustShort = 1 - 1e-5;
    return static_cast<float>(distance * kJustShort);
}

double transparencyOf(RayState &state, const RTCRayHit &ray, const Vec3 &direction) {
    // Surfaces may trace shadows themselves; beyond the recursion limit everything counts as opaque.
    if (state.origin.depth > state.recursionDepth) return 0;
    ShadingSample sample;
    RayOrigin origin;
    fillSample(state, ray,
               {.direction = direction,
                .refractionIndex = state.origin.refractionIndex,
                .flags = kRayShadow | (state.origin.sampled ? kRaySampled : 0)},
               sample, origin);
    const RayOriginScope scope(state, origin);
    const double value = state.scene->surfaceOf(ray.hit.geomID, ray.hit.primID).surface->evaluateTransparency(&sample);
    return value > 0 ? std::min(value, 1.0) : 0; // NaN is opaque
}

// Whether any hit stops a shadow ray, so that Embree's faster occlusion test suffices. That test cannot skip the
// polygon that the ray starts on. A triangle is never hit by a ray that starts beside it and leaves it, but the other
// triangles of a larger polygon may be, when the polygon is not quite flat.
bool anyHitStops(const RayState &state) {
    return state.allOpaque && !state.scene->hasDissolved && !state.scene->hasSingleSided &&
           !state.origin.polygonNumbers;
}

// The shadows of partly dissolved objects on a ray. Each lets its dissolve pass, and of the rest as much as its
// polygons.
class DissolvedShadows {
  public:
    void pass(std::uint32_t object, double dissolve, double transparency) {
        auto &shadows = shadows_.items;
        const auto found = std::ranges::find(shadows, object, &Shadow::object);
        if (found == shadows.end())
            shadows.push_back({.object = object, .dissolve = dissolve, .transparency = transparency});
        else
            found->transparency *= transparency;
    }
    double transmittance() const {
        double through = 1;
        for (const Shadow &each : shadows_.items) through *= each.dissolve + (1 - each.dissolve) * each.transparency;
        return through;
    }

  private:
    struct Shadow {
        std::uint32_t object;
        double dissolve, transparency;
    };
    ShortList<Shadow, 8> shadows_;
};

} // namespace

double transmittance(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, double distance,
                     const HitRules &rules, double *firstStop) {
    if (firstStop) *firstStop = HOST_RAY_MISS;
    RTCRayHit ray;
    Vec3 unit;
    if (!spawnRay(state.origin, origin, direction, ray, unit)) return 1;
    ray.ray.tfar = reach(distance);
    ++state.counts.shadow;
    if (!firstStop && anyHitStops(state)) {
        rtcOccluded1(scene, &state.context, &ray.ray);
        return ray.ray.tfar < 0 ? 0 : 1; // how Embree marks a hit
    }
    const float farthest = ray.ray.tfar;
    double through = 1;
    std::optional<DissolvedShadows> dissolved;
    while (findHit(state, scene, ray, rules)) {
        const double transparency = state.allOpaque ? 0 : transparencyOf(state, ray, unit);
        const double dissolve = dissolveAt(state, ray);
        if (transparency < 1 && firstStop && *firstStop < 0) *firstStop = static_cast<double>(ray.ray.tfar);
        if (dissolve > 0) [[unlikely]] {
            if (!dissolved) dissolved.emplace();
            dissolved->pass(ray.hit.geomID, dissolve, transparency);
        } else {
            through *= transparency;
        }
        if (through <= 0) return 0;
        advance(ray, farthest);
    }
    return dissolved ? through * dissolved->transmittance() : through;
}

} // namespace velm::host
