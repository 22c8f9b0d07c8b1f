#include "host/render/tracing/shade.h"

#include "host/base/short_list.h"
#include "host/graph/not_finite.h"
#include "host/render/tracing/illumination.h"
#include "host/render/tracing/layer_plan.h"

#include <algorithm>
#include <limits>

namespace velm::host {
namespace {

// Diffuse and specular light at a sample.
struct ReceivedLight {
    Vec3 diffuse, specular;
};

ReceivedLight receiveLight(RayState &state, const SurfaceValues &values, const Vec3 &position, const Vec3 &view) {
    const Vec3 normal(values.normal);
    const bool shines = values.specular > 0;
    ReceivedLight received;
    if (!(values.diffuse > 0) && !shines) return received;
    const double exponent = shines ? std::exp2(10 * values.glossiness + 2) : 0;
    for (const RenderLight &each : state.scene->lights) {
        const Light &light = each.light;
        gatherLight(state, light, position, &normal, light.sampleCount(), [&](const Vec3 &toLight, const Vec3 &colour) {
            received.diffuse += dot(normal, toLight) * colour;
            if (!shines) return;
            const double cosine = dot(normal, normalised(toLight + view, normal));
            if (cosine > 0) received.specular += std::pow(cosine, exponent) * colour;
        });
    }
    return received;
}

double usableIndex(double index) { return index > 0 && std::isfinite(index) ? index : 1; }

Vec3 seen(RayState &state, const Vec3 &position, const Vec3 &direction, double refractionIndex, unsigned mode,
          int flags) {
    double colour[3] = {0, 0, 0};
    traceShaded(state, position, direction, colour, refractionIndex, mode, flags);
    return Vec3(colour);
}

// The colour seen through the surface, by Snell's law. A ray that hits the back of a surface leaves the body; the
// refraction index outside is 1. Total internal reflection counts as a reflection.
Vec3 seenThrough(RayState &state, const ShadingSample &sample, const SurfaceValues &values, const Vec3 &direction) {
    const bool leaves = (sample.rayFlags & kRayBackSide) != 0;
    const double from = usableIndex(sample.refractionIndex);
    const double to = leaves ? 1 : usableIndex(values.refractionIndex);
    Vec3 normal(values.normal);
    if (dot(normal, direction) >= 0)
        normal = Vec3(sample.geometricNormal); // a bumped normal that faces away from the view
    const double ratio = from / to, cosine = -dot(normal, direction);
    const double square = 1 - ratio * ratio * (1 - cosine * cosine);
    const Vec3 position(sample.position);
    if (square < 0) return seen(state, position, mirrored(direction, normal), from, kTraceReflection, 0);
    const Vec3 refracted = ratio * direction + (ratio * cosine - std::sqrt(square)) * normal;
    return seen(state, position, refracted, to, kTraceRefraction, leaves ? kRayToOutside : 0);
}

void noteNotFinite(Surface &surface, ShadingSample &sample, NotFiniteSource &source) {
    for (const auto &input : surface.network().root().inputs) {
        if (source.isKnown()) return;
        if (const HostNode *node = sourceOfNotFinite(*input, &sample))
            source = {.surface = surface.name(), .node = node->name};
    }
}

// A colour that is seen through the fog. The distances are those of Fog::transmittance.
Vec3 inFog(const RayState &state, const Vec3 &colour, const Vec3 &direction, double from, double to) {
    const Fog &fogs = state.scene->fog;
    const double through = fogs.transmittance(from, to);
    const Vec3 fog = fogs.hasBackdropColour() ? backdropAlong(state, direction) : Vec3(fogs.colour());
    return through * colour + (1 - through) * fog;
}

} // namespace

HitRules rulesOf(unsigned mode) {
    return {.mayHitOwnPolygon = (mode & kTraceMayHitOwnPolygon) != 0,
            .hitsBackSides = (mode & kTraceShadeBackSides) != 0,
            .ownObjectOnly = (mode & kTraceOwnObjectOnly) != 0,
            .neverOwnObject = (mode & kTraceKindMask) == kTraceDissolve};
}

Vec3 backdropAlong(const RayState &state, const Vec3 &direction) {
    const double seen[3] = {direction.x, direction.y, direction.z};
    double components[3];
    state.scene->backdrop.evaluate(seen, components);
    const Vec3 colour(components);
    if (state.notFinite && !state.notFinite->isKnown() && !isFinite(colour)) [[unlikely]]
        state.notFinite->isBackdrop = true;
    return colour;
}

Vec3 shade(RayState &state, const ShadingSample &sample, const SurfaceValues &values) {
    const Vec3 position(sample.position);
    const Vec3 direction = normalised(position - Vec3(sample.raySource), -Vec3(sample.geometricNormal));
    const ReceivedLight light = receiveLight(state, values, position, -direction);

    const double opacity = 1 - std::clamp(values.transparency, 0.0, 1.0);
    const Vec3 lit = values.diffuse * (state.scene->ambient + light.diffuse);
    const Vec3 own = Vec3(values.colour) * (Vec3{values.luminosity, values.luminosity, values.luminosity} + lit);
    Vec3 colour = opacity * own + values.specular * light.specular;
    if (values.reflection > 0) {
        const Vec3 mirror = mirrored(direction, Vec3(values.normal));
        colour += values.reflection * seen(state, position, mirror, sample.refractionIndex, kTraceReflection, 0);
    }
    if (values.transparency > 0) colour += values.transparency * seenThrough(state, sample, values, direction);
    return colour;
}

Vec3 shadeHit(RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
              SurfaceValues &values) {
    RayOrigin origin;
    fillSample(state, ray, incoming, sample, origin);
    const double start = state.origin.travelled;
    const RayOriginScope scope(state, origin);
    Surface &surface = *state.scene->surfaceOf(ray.hit.geomID, ray.hit.primID).surface;
    values = surface.evaluate(&sample);
    if (state.notFinite) [[unlikely]]
        noteNotFinite(surface, sample, *state.notFinite);
    const Vec3 colour = shade(state, sample, values);
    if (state.layers) [[unlikely]]
        state.layers->record(*state.scene, ray.hit, sample, values);
    return state.scene->fog.exists() ? inFog(state, colour, incoming.direction, start, origin.travelled) : colour;
}

SeenColour shadeRay(RayState &state, RTCScene scene, const HitRules &rules, RTCRayHit &ray, const IncomingRay &incoming,
                    const std::optional<Vec3> &behind) {
    constexpr float kFarthest = std::numeric_limits<float>::infinity();
    ShadingSample sample;
    SurfaceValues values;
    double dissolve = dissolveAt(state, ray);
    Vec3 colour = shadeHit(state, ray, incoming, sample, values);
    if (!(dissolve > 0)) [[likely]]
        return {.colour = colour};
    colour = (1 - dissolve) * colour;
    double through = dissolve;
    ShortList<std::uint32_t, 16> objects;
    auto &passed = objects.items;
    while (dissolve > 0) {
        passed.push_back(ray.hit.geomID);
        do {
            advance(ray, kFarthest);
            if (findHit(state, scene, ray, rules)) continue;
            colour += through * (behind ? *behind : backdropAlong(state, incoming.direction));
            return {.colour = colour, .opacity = 1 - through};
        } while (std::ranges::find(passed, ray.hit.geomID) != passed.end());
        dissolve = dissolveAt(state, ray);
        colour += through * (1 - dissolve) * shadeHit(state, ray, incoming, sample, values);
        through *= dissolve;
    }
    return {.colour = colour};
}

double traceShaded(RayState &state, const Vec3 &origin, const Vec3 &direction, double colour[3], double refractionIndex,
                   unsigned mode, int extraFlags) {
    RTCRayHit ray;
    Vec3 unit;
    if (!spawnRay(state.origin, origin, direction, ray, unit)) return HOST_RAY_MISS;
    ++state.counts.shaded;
    const HitRules rules = rulesOf(mode);
    const bool showsBackdrop = (mode & kTraceUseBackdropColour) == 0;
    if (!findHit(state, state.rayScene, ray, rules)) {
        if (showsBackdrop) backdropAlong(state, unit).store(colour);
        return HOST_RAY_MISS;
    }
    const double distance = static_cast<double>(ray.ray.tfar);
    if (state.origin.depth >= state.recursionDepth) {
        std::fill_n(colour, 3, 0.0);
        return distance;
    }
    const bool sampled = (mode & kTraceSampled) != 0 || state.origin.sampled;
    shadeRay(state, state.rayScene, rules, ray,
             {.direction = unit, .refractionIndex = refractionIndex, .flags = extraFlags | (sampled ? kRaySampled : 0)},
             showsBackdrop ? std::nullopt : std::optional(Vec3(colour)))
        .colour.store(colour);
    return distance;
}

} // namespace velm::host
