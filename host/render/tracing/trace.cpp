#include "host/render/tracing/trace.h"

#include "host/graph/surface.h"
#include "host/render/tracing/hit.h"

#include <algorithm>

namespace velm::host {

bool isOpenBack(const RenderSceneData &world, const RTCRayHit &ray) {
    if (world.surfaceOf(ray.hit.geomID, ray.hit.primID).doubleSided) return false;
    const Mesh &mesh = world.objects[ray.hit.geomID].mesh;
    const Vec3 corner = mesh.corner(ray.hit.primID, 0);
    const Vec3 front = cross(mesh.corner(ray.hit.primID, 1) - corner, mesh.corner(ray.hit.primID, 2) - corner);
    return dot(front, {ray.ray.dir_x, ray.ray.dir_y, ray.ray.dir_z}) > 0;
}

namespace {

// Just short of a light, so that geometry at the light's own place does not count.
float reach(double distance) {
    constexpr double kJustShort = 1 - 1e-5;
    return static_cast<float>(distance * kJustShort);
}

double transparencyOf(RayState &state, const RTCRayHit &ray, const Vec3 &direction) {
    // Surfaces may trace shadows themselves; beyond the limit, everything stops them.
    if (state.caster.depth > state.recursionDepth) return 0;
    ShadingSample sample;
    Caster caster;
    fillSample(state, ray,
               {.direction = direction,
                .refractionIndex = state.caster.refractionIndex,
                .flags = kRayShadow | (state.caster.sampled ? kRaySampled : 0)},
               sample, caster);
    const CasterScope scope(state, caster);
    const double value = state.world->surfaceOf(ray.hit.geomID, ray.hit.primID).surface->evaluateTransparency(&sample);
    return value > 0 ? std::min(value, 1.0) : 0; // what is not a number is opaque
}

// Whether a ray is stopped by whatever it meets, so that it need not be known what that is. A single triangle cannot be
// hit by a ray that starts beside it and leaves it; the rest of a larger polygon can, when it is not quite flat.
bool anyHitStops(const RayState &state) {
    return state.allOpaque && !state.world->hasSingleSided && state.caster.polygonNumbers == nullptr;
}

} // namespace

double transmitted(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, double distance,
                   const HitRules &rules, double *firstStop) {
    if (firstStop != nullptr) *firstStop = HOST_RAY_MISS;
    RTCRayHit ray;
    Vec3 unit;
    if (!startRay(state.caster, origin, direction, ray, unit)) return 1;
    ray.ray.tfar = reach(distance);
    ++state.counts.shadow;
    if (firstStop == nullptr && anyHitStops(state)) {
        rtcOccluded1(scene, &state.context, &ray.ray);
        return ray.ray.tfar < 0 ? 0 : 1; // Embree's sign of a hit
    }
    const float farthest = ray.ray.tfar;
    double share = 1;
    while (findHit(state, scene, ray, rules)) {
        const double transparency = state.allOpaque ? 0 : transparencyOf(state, ray, unit);
        if (transparency < 1 && firstStop != nullptr && *firstStop < 0) *firstStop = static_cast<double>(ray.ray.tfar);
        share *= transparency;
        if (share <= 0) return 0;
        passHit(ray, farthest);
    }
    return share;
}

} // namespace velm::host
