#include "host/render/tracing/ray_functions.h"

#include "host/render/tracing/illumination.h"
#include "host/render/tracing/shade.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace velm::host {
namespace {

// The calling thread's state. A sample's ray functions may only be called while that sample is being shaded.
RayState &activeState() {
    assert(rayState.scene && "a ray function was called outside of its sample's evaluation");
    return rayState;
}

bool hasDirection(const Vec3 &direction) { return isFinite(direction) && largest(direction) > 0; }

// The distance to the nearest hit. Nodes call this millions of times per frame, so there is no layer between them and
// Embree.
double distanceAlong(RayState &state, const double position[3], const double direction[3], const HitRules &rules) {
    RTCRayHit ray;
    Vec3 unit;
    if (!spawnRay(state.origin, Vec3(position), Vec3(direction), ray, unit)) return HOST_RAY_MISS;
    ++state.counts.cast;
    return findHit(state, state.rayScene, ray, rules) ? static_cast<double>(ray.ray.tfar) : HOST_RAY_MISS;
}

double rayCast(const double position[3], const double direction[3]) {
    return distanceAlong(activeState(), position, direction, {});
}

double opacityAlong(RayState &state, RTCScene scene, const double position[3], const double direction[3],
                    double colour[3], unsigned mode) {
    if (!hasDirection(Vec3(direction)) || !isFinite(Vec3(position))) return HOST_RAY_MISS;
    double firstStop;
    const double through = transmittance(state, scene, Vec3(position), Vec3(direction), rulesOf(mode), firstStop);
    std::fill_n(colour, 3, 1 - through);
    return firstStop;
}

double rayTraceMode(const double position[3], const double direction[3], double colour[3], double refractionIndex,
                    int modeWord) {
    RayState &state = activeState();
    const unsigned mode = static_cast<unsigned>(modeWord);
    switch (mode & kTraceKindMask) {
    case kTraceDistance: return distanceAlong(state, position, direction, rulesOf(mode));
    case kTraceReflection:
    case kTraceRefraction:
    case kTraceDissolve: return traceShaded(state, Vec3(position), Vec3(direction), colour, refractionIndex, mode);
    case kTraceShadow: return opacityAlong(state, state.shadowScene, position, direction, colour, mode);
    case kTraceOcclusion: return opacityAlong(state, state.rayScene, position, direction, colour, mode);
    case kTraceBackdrop: {
        const bool wanted = hasDirection(Vec3(direction)) && (mode & kTraceUseBackdropColour) == 0;
        if (wanted) state.scene->backdrop.evaluate(direction, colour);
        return HOST_RAY_MISS;
    }
    default: return HOST_RAY_MISS;
    }
}

double rayTrace(const double position[3], const double direction[3], double colour[3]) {
    RayState &state = activeState();
    return traceShaded(state, Vec3(position), Vec3(direction), colour, state.origin.refractionIndex, kTraceReflection);
}

// Copies the members that the two records have in common.
void copySample(const ShadingSample &sample, HostRayHit &hit) {
    hit.pixelX = sample.pixelX;
    hit.pixelY = sample.pixelY;
    std::copy_n(sample.objectPosition, 3, hit.objectPosition);
    std::copy_n(sample.position, 3, hit.position);
    std::copy_n(sample.geometricNormal, 3, hit.geometricNormal);
    hit.spotSize = sample.spotSize;
    std::copy_n(sample.raySource, 3, hit.raySource);
    hit.rayLength = sample.rayLength;
    hit.cosine = sample.cosine;
    std::copy_n(sample.objectToWorld, 9, hit.objectToWorld);
    std::copy_n(sample.worldToObject, 9, hit.worldToObject);
    hit.objectItem = sample.objectItem;
    hit.polygonNumber = sample.polygonNumber;
    std::copy_n(sample.shadingNormal, 3, hit.shadingNormal);
    hit.rayFlags = sample.rayFlags;
    hit.rayDepth = sample.rayDepth;
    hit.sourceItem = sample.sourceItem;
}

void copyValues(const SurfaceValues &values, HostRayHit &hit) {
    std::copy_n(values.normal, 3, hit.shadingNormal);
    hit.luminosity = values.luminosity;
    hit.diffuse = values.diffuse;
    hit.specular = values.specular;
    hit.mirror = values.reflection;
    hit.transparency = values.transparency;
    hit.eta = values.refractionIndex;
    hit.roughness = 1 - values.glossiness;
}

// Fills the hit record of a ray that hits nothing: where it came from, and the backdrop's colour.
void describeMiss(const RayState &state, const Vec3 &origin, const Vec3 &unit, HostRayHit &hit) {
    hit.pixelX = state.pixelX;
    hit.pixelY = state.pixelY;
    origin.store(hit.raySource);
    hit.rayFlags = state.origin.sampled ? kRaySampled : 0;
    hit.rayDepth = state.origin.depth + 1;
    hit.sourceItem = const_cast<HostItem *>(state.origin.item);
    const double seen[3] = {unit.x, unit.y, unit.z};
    state.scene->backdrop.evaluate(seen, hit.colour);
}

double rayShade(const double position[3], const double direction[3], HostRayHit *hit) {
    RayState &state = activeState();
    RTCRayHit ray;
    Vec3 unit;
    const Vec3 origin(position);
    if (!spawnRay(state.origin, origin, Vec3(direction), ray, unit)) return HOST_RAY_MISS;
    ++state.counts.shaded;
    *hit = {};
    setRayFunctions(*hit);
    if (!findHit(state, state.rayScene, ray, {})) {
        describeMiss(state, origin, unit, *hit);
        return HOST_RAY_MISS;
    }
    const IncomingRay incoming = {.direction = unit,
                                  .refractionIndex = state.origin.refractionIndex,
                                  .flags = state.origin.sampled ? kRaySampled : 0};
    ShadingSample sample;
    if (state.origin.depth >= state.recursionDepth) {
        RayOrigin sampleOrigin;
        fillSample(state, ray, incoming, sample, sampleOrigin);
        copySample(sample, *hit);
    } else {
        SurfaceValues values;
        const Vec3 colour = shadeHit(state, ray, incoming, sample, values);
        copySample(sample, *hit);
        copyValues(values, *hit);
        colour.store(hit->colour);
    }
    return static_cast<double>(ray.ray.tfar);
}

// The light that arrives at `position` from one light: from its whole area, or from one point of it.
int illuminateBy(const HostItem *item, const double position[3], double direction[3], double colour[3], bool onePoint) {
    RayState &state = activeState();
    std::fill_n(direction, 3, 0.0);
    std::fill_n(colour, 3, 0.0);
    if (!item || item->type != kItemLight) return 0;
    const auto index = static_cast<std::size_t>(item->index);
    if (index >= state.scene->lights.size()) return 0; // no longer in the scene
    const Light &light = state.scene->lights[index].light;
    Vec3 sum, mean;
    int arrived = 0;
    gatherLight(state, light, Vec3(position), nullptr, onePoint ? 1 : light.sampleCount(),
                [&](const Vec3 &toLight, const Vec3 &received) {
                    ++arrived;
                    sum += received;
                    mean += toLight;
                });
    if (arrived == 0) return 0;
    (-normalised(mean)).store(direction);
    sum.store(colour);
    return 1;
}

int illuminate(HostItem *light, const double position[3], double direction[3], double colour[3]) {
    return illuminateBy(light, position, direction, colour, false);
}

int illuminateSampled(HostItem *light, const double position[3], double direction[3], double colour[3], void *) {
    return illuminateBy(light, position, direction, colour, true);
}

} // namespace

void setRayFunctions(ShadingSample &sample) {
    sample.illuminate = illuminate;
    sample.illuminateSampled = illuminateSampled;
    sample.rayTrace = rayTrace;
    sample.rayCast = rayCast;
    sample.rayShade = rayShade;
    sample.rayTraceMode = rayTraceMode;
}

void setRayFunctions(HostRayHit &hit) {
    hit.illuminate = illuminate;
    hit.rayTrace = rayTrace;
    hit.rayCast = rayCast;
    hit.rayShade = rayShade;
}

} // namespace velm::host
