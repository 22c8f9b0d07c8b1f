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
    const double time = static_cast<double>(ray.ray.time);
    std::optional<Transform> moved;
    if (object.isInstance && !object.path.empty()) moved = transformAt(object.path, time);
    const Transform &transform = moved ? *moved : object.transform;
    const auto corner = [&](int which) { return object.corner(ray.hit.primID, which, time, transform); };
    const Vec3 first = corner(0);
    Vec3 front = cross(corner(1) - first, corner(2) - first);
    if (object.isInstance && transform.mirrors()) front = -front;
    return dot(front, {ray.ray.dir_x, ray.ray.dir_y, ray.ray.dir_z}) > 0;
}

namespace {

// Ends just short of a light, so that geometry at the light's own position casts no shadow.
float reach(double distance) {
    constexpr double kJustShort = 1 - 1e-5;
    return static_cast<float>(distance * kJustShort);
}

// The transmittance of a hit, by component, without regard to the dissolve of its object.
Vec3 passedBy(RayState &state, const RTCRayHit &ray, const Vec3 &direction, ShadowFilter filter) {
    // Surfaces may trace shadows themselves; beyond the recursion limit everything counts as opaque.
    if (state.origin.depth > state.recursionDepth) return {};
    ShadingSample sample;
    RayOrigin origin;
    fillSample(state, ray,
               {.direction = direction,
                .refractionIndex = state.origin.refractionIndex,
                .flags = kRayShadow | (state.origin.sampled ? kRaySampled : 0)},
               sample, origin);
    const RayOriginScope scope(state, origin);
    const Surface &surface = *state.scene->surfaceOf(ray.hit.geomID, ray.hit.primID).surface;
    const auto fraction = [](double value) { return value > 0 ? std::min(value, 1.0) : 0; }; // NaN is opaque
    const double through = fraction(surface.evaluateTransparency(&sample));
    if (filter == ShadowFilter::grey || through == 0) return {through, through, through};
    double colour[3];
    surface.evaluateColour(&sample, colour);
    return through * Vec3{fraction(colour[0]), fraction(colour[1]), fraction(colour[2])};
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
    void pass(std::uint32_t object, double dissolve, const Vec3 &passed) {
        auto &shadows = shadows_.items;
        const auto found = std::ranges::find(shadows, object, &Shadow::object);
        if (found == shadows.end())
            shadows.push_back({.object = object, .dissolve = dissolve, .passed = passed});
        else
            found->passed = found->passed * passed;
    }
    Vec3 transmittance() const {
        Vec3 through{1, 1, 1};
        for (const auto &[object, dissolve, passed] : shadows_.items)
            through = through * (Vec3{dissolve, dissolve, dissolve} + (1 - dissolve) * passed);
        return through;
    }

  private:
    struct Shadow {
        std::uint32_t object;
        double dissolve;
        Vec3 passed;
    };
    ShortList<Shadow, 8> shadows_;
};

// Follows a ray to its tfar. `firstStop` may be null.
Vec3 transmittanceAlong(RayState &state, RTCScene scene, RTCRayHit &ray, const Vec3 &unit, const HitRules &rules,
                        ShadowFilter filter, double *firstStop) {
    const float farthest = ray.ray.tfar;
    Vec3 through{1, 1, 1};
    std::optional<DissolvedShadows> dissolved;
    while (findHit(state, scene, ray, rules)) {
        const Vec3 passed = state.allOpaque ? Vec3{} : passedBy(state, ray, unit, filter);
        const double dissolve = dissolveAt(state, ray);
        if (firstStop && *firstStop < 0 && passed.x < 1) *firstStop = static_cast<double>(ray.ray.tfar);
        if (dissolve > 0) [[unlikely]] {
            if (!dissolved) dissolved.emplace();
            dissolved->pass(ray.hit.geomID, dissolve, passed);
        } else {
            through = through * passed;
        }
        if (through == Vec3{}) return {};
        advance(ray, farthest);
    }
    return dissolved ? through * dissolved->transmittance() : through;
}

} // namespace

Vec3 transmittance(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, double distance,
                   ShadowFilter filter) {
    RTCRayHit ray;
    Vec3 unit;
    if (!spawnRay(state.origin, origin, direction, ray, unit)) return {1, 1, 1};
    ray.ray.tfar = reach(distance);
    ++state.counts.shadow;
    if (!anyHitStops(state)) return transmittanceAlong(state, scene, ray, unit, {}, filter, nullptr);
    rtcOccluded1(scene, &state.context, &ray.ray);
    const double through = ray.ray.tfar < 0 ? 0 : 1; // how Embree marks a hit
    return {through, through, through};
}

double transmittance(RayState &state, RTCScene scene, const Vec3 &origin, const Vec3 &direction, const HitRules &rules,
                     double &firstStop) {
    firstStop = HOST_RAY_MISS;
    RTCRayHit ray;
    Vec3 unit;
    if (!spawnRay(state.origin, origin, direction, ray, unit)) return 1;
    ++state.counts.shadow;
    return transmittanceAlong(state, scene, ray, unit, rules, ShadowFilter::grey, &firstStop).x;
}

} // namespace velm::host
