// The colour of a hit.
#pragma once

#include "host/graph/surface.h"
#include "host/render/tracing/hit.h"
#include "host/render/tracing/trace.h"

#include <optional>

namespace velm::host {

// The colour of a sample, from its surface's values, the lights, and reflected and refracted rays:
//   (1 - transparency) colour (luminosity + diffuse (ambient + sum of light N.L))
//   + specular sum of light (N.H)^(2^(10 glossiness + 2))           (Blinn, "Models of light reflection ...", 1977)
//   + reflection times the colour of the reflected ray + transparency times the colour of the refracted ray
// where N is the surface's normal, L points to the light and H lies halfway between L and the view. `state.origin` has
// to be the sample's. [render threads]
Vec3 shade(RayState &state, const ShadingSample &sample, const SurfaceValues &values);

// The colour of the backdrop in a direction in world space, which need not have length 1. [render threads]
Vec3 backdropAlong(const RayState &state, const Vec3 &direction);

// Fills the sample of a hit, evaluates its surface, shades it, and covers it with the fog between the ray's origin and
// the hit. `sample` and `values` are outputs. [render threads]
Vec3 shadeHit(RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
              SurfaceValues &values);

// The colour along a ray, and the fraction of it that is not of what is behind all objects.
struct SeenColour {
    Vec3 colour;
    double opacity = 1;
};

// The colour along a ray whose first hit, by findHit in `scene` and with `rules`, is in `ray`. A partly dissolved
// object is mixed with what the ray hits behind it, whose polygons of the same object do not count: so it fades as a
// whole. Where nothing is hit any more, there is `behind`, or without it the backdrop. `ray` ends at its last hit.
// [render threads]
SeenColour shadeRay(RayState &state, RTCScene scene, const HitRules &rules, RTCRayHit &ray, const IncomingRay &incoming,
                    const std::optional<Vec3> &behind = {});

// Traces a ray of a shading kind (kTraceReflection, kTraceRefraction, kTraceDissolve), for rayTraceMode and for
// surfaces. Sets `colour` and returns the distance to the hit, or HOST_RAY_MISS. `mode` is a mode word of rayTraceMode;
// `extraFlags` are added to the ray flags of the hit's sample. [render threads]
double traceShaded(RayState &state, const Vec3 &origin, const Vec3 &direction, double colour[3], double refractionIndex,
                   unsigned mode, int extraFlags = 0);

// The hit rules that a mode word of rayTraceMode asks for.
HitRules rulesOf(unsigned mode);

} // namespace velm::host
