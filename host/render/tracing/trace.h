// Rays: how they start, which hits count, and how much light passes along them.
#pragma once

#include "host/render/tracing/ray_state.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velm::host {

// Which hits a ray ignores.
struct HitRules {
    bool mayHitOwnPolygon = false;
    bool hitsBackSides = false; // even of surfaces that are not double-sided
    bool ownObjectOnly = false;
    bool neverOwnObject = false;
};

// Whether the squares of a point's coordinates fit into single precision.
inline bool isNear(const Vec3 &point) {
    constexpr double kFarthest = 1e30;
    return std::fabs(point.x) < kFarthest && std::fabs(point.y) < kFarthest && std::fabs(point.z) < kFarthest;
}

inline std::array<float, 3> rounded(const Vec3 &point) {
    return {static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)};
}

inline void setOrigin(RTCRayHit &ray, const std::array<float, 3> &point) {
    ray.ray.org_x = point[0];
    ray.ray.org_y = point[1];
    ray.ray.org_z = point[2];
}

// Sets up Embree's record of the ray from `origin` along `direction`, which may have any length; `unit` gets the
// normalised direction. `from` is the sample or camera that the ray belongs to. Returns false, and the ray hits
// nothing, for a direction of length 0 and for an origin or direction that is not finite.
//
// A ray must not hit the surface that it starts on because of rounding errors. The sample's own polygon is skipped by
// its number. For its neighbours, an origin within the margin of the sample's plane is moved to the edge of the margin,
// on the side to which the ray goes. The margin is a bound on the rounding error of the positions involved, so it
// scales with the scene (Wächter and Binder, "A Fast and Robust Method for Avoiding Self-Intersection", Ray Tracing
// Gems, 2019). Origins farther off the plane are used as they are.
inline bool spawnRay(const RayOrigin &from, const Vec3 &origin, const Vec3 &direction, RTCRayHit &ray, Vec3 &unit) {
    constexpr double kSmall = 1e-200, kLarge = 1e200; // outside, the squared length is not reliable
    constexpr double kUnit = 1e-8;                    // closer to 1 than single precision resolves
    const double square = dot(direction, direction);
    if (std::fabs(square - 1) < kUnit) [[likely]] {
        unit = direction;
    } else if (square > kSmall && square < kLarge) [[likely]] {
        unit = 1 / std::sqrt(square) * direction;
    } else {
        unit = normalised(direction, {0, 0, 0});
        if (dot(unit, unit) == 0) return false;
    }
    const bool leavesBack = dot(unit, from.normal) < 0;
    if (origin.x == from.start.x && origin.y == from.start.y && origin.z == from.start.z) [[likely]] {
        setOrigin(ray, leavesBack ? from.back : from.front);
    } else {
        if (!isNear(origin)) return false;
        Vec3 start = origin;
        const double height = dot(origin - from.position, from.normal);
        if (std::fabs(height) < from.margin)
            start += ((leavesBack ? -from.margin : from.margin) - height) * from.normal;
        setOrigin(ray, rounded(start));
    }
    ray.ray.tnear = 0;
    ray.ray.dir_x = static_cast<float>(unit.x);
    ray.ray.dir_y = static_cast<float>(unit.y);
    ray.ray.dir_z = static_cast<float>(unit.z);
    ray.ray.time = from.time;
    ray.ray.tfar = std::numeric_limits<float>::infinity();
    ray.ray.mask = ~0u;
    ray.ray.id = 0;
    ray.ray.flags = 0;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    return true;
}

// The part of what is behind a hit that its object's dissolve shows. An object is whole for rays that start on it.
inline double dissolveAt(const RayState &state, const RTCRayHit &ray) {
    return ray.hit.geomID == state.origin.object ? 0 : state.scene->objects[ray.hit.geomID].dissolve;
}

// Whether a hit is on the back of a single-sided polygon, and so does not count.
bool isOpenBack(const RenderSceneData &scene, const RTCRayHit &ray);

inline bool hitCounts(const RayState &state, const RTCRayHit &ray, const HitRules &rules) {
    const std::uint32_t object = ray.hit.geomID;
    if (object == state.origin.object) {
        if (rules.neverOwnObject) return false;
        const std::uint32_t *numbers = state.origin.polygonNumbers;
        const std::uint32_t polygon = numbers ? numbers[ray.hit.primID] : ray.hit.primID;
        if (!rules.mayHitOwnPolygon && polygon == state.origin.polygon) return false;
    } else if (rules.ownObjectOnly) {
        return false;
    }
    return !state.scene->hasSingleSided || rules.hitsBackSides || !isOpenBack(*state.scene, ray);
}

// Continues the ray behind its hit, up to `farthest`. Embree's distances are a few rounding errors off the value that
// it compares with the start of the ray's interval. So the start moves by several rounding errors, and always by more
// than nothing: the same hit must not be found again. Hits that lie closer together than that count as one.
inline void advance(RTCRayHit &ray, float farthest) {
    constexpr float kOnwards = 1 + 4 * std::numeric_limits<float>::epsilon();
    const float reached = std::max(ray.ray.tfar, ray.ray.tnear) * kOnwards;
    ray.ray.tnear = std::max(reached, std::numeric_limits<float>::min());
    ray.ray.tfar = farthest;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
}

// Finds the nearest hit that counts between ray.ray.tnear and ray.ray.tfar, and stores it in `ray`. False when there is
// none.
inline bool findHit(RayState &state, RTCScene scene, RTCRayHit &ray, const HitRules &rules) {
    const float farthest = ray.ray.tfar;
    for (;;) {
        rtcIntersect1(scene, &state.context, &ray);
        if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
        nameMeshOf(ray.hit, state.objects);
        if (hitCounts(state, ray, rules)) [[likely]]
            return true;
        advance(ray, farthest);
    }
}

// How transparent surfaces filter light: by their transparency, or by their transparency times their colour, whose
// components are clamped to 0 to 1.
enum class ShadowFilter { grey, colour };

// The transmittance of a ray for red, green and blue: the product of those of all surfaces that it hits within
// `distance` metres. An object that is partly dissolved passes its dissolve, and filters the rest. 1 for a ray without
// a direction. [render threads]
Vec3 transmittance(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, double distance,
                   ShadowFilter filter);

// The same without colours, for any distance, and only for the hits that `rules` allow. Sets `firstStop` to the
// distance of the first hit that is not fully transparent, or to HOST_RAY_MISS. [render threads]
double transmittance(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, const HitRules &rules,
                     double &firstStop);

} // namespace velm::host
