// Finding what a ray hits: where it starts, and which hits count.
#pragma once

#include "host/render/tracing/ray_state.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velm::host {

// Which hits a ray passes by.
struct HitRules {
    bool mayHitOwnPolygon = false;
    bool hitsBackSides = false; // also of surfaces that are not double-sided
    bool ownObjectOnly = false;
    bool neverOwnObject = false;
};

// Whether single precision can still square a place's coordinates.
inline bool isNear(const Vec3 &place) {
    constexpr double kFarthest = 1e30;
    return std::fabs(place.x) < kFarthest && std::fabs(place.y) < kFarthest && std::fabs(place.z) < kFarthest;
}

inline std::array<float, 3> rounded(const Vec3 &place) {
    return {static_cast<float>(place.x), static_cast<float>(place.y), static_cast<float>(place.z)};
}

inline void setOrigin(RTCRayHit &ray, const std::array<float, 3> &place) {
    ray.ray.org_x = place[0];
    ray.ray.org_y = place[1];
    ray.ray.org_z = place[2];
}

// Sets up a ray in Embree's form. `unit` gets the normalised direction. False for a direction of no length or a
// position or direction that is not finite: such a ray hits nothing.
//
// Rays from the caster's own surface must not hit it where the arithmetic is not exact. The caster's polygon itself is
// left out by its number; against its neighbours the origin, where it lies within a margin of the caster's plane, is
// moved to the margin's edge on the side to which the ray goes. The margin is a bound on the error of the positions
// involved in floating point, as in Wächter and Binder, "A Fast and Robust Method for Avoiding Self-Intersection", Ray
// Tracing Gems, 2019, so it grows and shrinks with the scene. Origins farther off the plane are used as they are.
inline bool startRay(const Caster &caster, const Vec3 &origin, const Vec3 &direction, RTCRayHit &ray, Vec3 &unit) {
    constexpr double kSmall = 1e-200, kLarge = 1e200; // outside, the square of the length is not to be trusted
    constexpr double kUnit = 1e-8;                    // closer to 1 than single precision tells
    const double square = dot(direction, direction);
    if (std::fabs(square - 1) < kUnit) [[likely]] {
        unit = direction;
    } else if (square > kSmall && square < kLarge) [[likely]] {
        unit = 1 / std::sqrt(square) * direction;
    } else {
        unit = normalised(direction, {0, 0, 0});
        if (dot(unit, unit) == 0) return false;
    }
    const bool leavesBack = dot(unit, caster.normal) < 0;
    if (origin.x == caster.start.x && origin.y == caster.start.y && origin.z == caster.start.z) [[likely]] {
        setOrigin(ray, leavesBack ? caster.back : caster.front);
    } else {
        if (!isNear(origin)) return false;
        Vec3 start = origin;
        const double height = dot(origin - caster.position, caster.normal);
        if (std::fabs(height) < caster.margin)
            start += ((leavesBack ? -caster.margin : caster.margin) - height) * caster.normal;
        setOrigin(ray, rounded(start));
    }
    ray.ray.tnear = 0;
    ray.ray.dir_x = static_cast<float>(unit.x);
    ray.ray.dir_y = static_cast<float>(unit.y);
    ray.ray.dir_z = static_cast<float>(unit.z);
    ray.ray.time = 0;
    ray.ray.tfar = std::numeric_limits<float>::infinity();
    ray.ray.mask = ~0u;
    ray.ray.id = 0;
    ray.ray.flags = 0;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    return true;
}

// Whether a hit is on the back of a polygon that has none, and so is no hit.
bool isOpenBack(const RenderSceneData &world, const RTCRayHit &ray);

inline bool hitCounts(const RayState &state, const RTCRayHit &ray, const HitRules &rules) {
    const std::uint32_t object = ray.hit.geomID;
    if (object == state.caster.object) {
        if (rules.neverOwnObject) return false;
        const std::uint32_t *numbers = state.caster.polygonNumbers;
        const std::uint32_t polygon = numbers == nullptr ? ray.hit.primID : numbers[ray.hit.primID];
        if (!rules.mayHitOwnPolygon && polygon == state.caster.polygon) return false;
    } else if (rules.ownObjectOnly) {
        return false;
    }
    return !state.world->hasSingleSided || rules.hitsBackSides || !isOpenBack(*state.world, ray);
}

// Goes on behind the hit. Embree's distances are a few roundings off what it compares with the ray's start, so the
// start moves on by several of them, and always by something: a hit must not be found again. What lies nearer together
// along the ray than that counts as one.
inline void passHit(RTCRayHit &ray, float farthest) {
    constexpr float kOnwards = 1 + 4 * std::numeric_limits<float>::epsilon();
    const float reached = std::max(ray.ray.tfar, ray.ray.tnear) * kOnwards;
    ray.ray.tnear = std::max(reached, std::numeric_limits<float>::min());
    ray.ray.tfar = farthest;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
}

// The nearest hit that counts, from ray.ray.tnear on. Leaves it in `ray`.
inline bool findHit(RayState &state, RTCScene scene, RTCRayHit &ray, const HitRules &rules) {
    const float farthest = ray.ray.tfar;
    for (;;) {
        rtcIntersect1(scene, &state.context, &ray);
        if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
        if (hitCounts(state, ray, rules)) [[likely]]
            return true;
        passHit(ray, farthest);
    }
}

// How much of the light comes through along a ray: the product of the transparencies of what it passes, up to
// `distance`. 1 for a ray without a direction. *firstStop, unless null, gets the distance to the first thing that is
// not fully transparent, or HOST_RAY_MISS.
double transmitted(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, double distance,
                   const HitRules &rules, double *firstStop);

} // namespace velm::host
