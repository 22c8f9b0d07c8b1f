// The colour of what a ray hits.
#pragma once

#include "host/graph/surface.h"
#include "host/render/tracing/hit.h"
#include "host/render/tracing/trace.h"

namespace velm::host {

// The colour of a sample as its surface and the lights have it, mirrored and refracted rays included:
//   (1 - transparency) colour (luminosity + diffuse (ambient + sum of light N.L))
//   + specular sum of light (N.H)^(2^(10 glossiness + 2))           (Blinn, "Models of light reflection ...", 1977)
//   + reflection times what the mirrored ray sees + transparency times what the refracted ray sees
// where N is the surface's normal, L points to the light and H lies halfway between L and the view. The state's caster
// is the sample. [render threads]
Vec3 shade(RayState &state, const ShadingSample &sample, const SurfaceValues &values);

// Shades a hit from its beginning to its end. Leaves the sample and the surface's values for whoever needs them.
Vec3 shadeHit(RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
              SurfaceValues &values);

// A ray of a shading kind (kTraceReflection, kTraceRefraction, kTraceDissolve): what rayTraceMode does for them, and
// what surfaces do themselves. `extraFlags` are added to the flags of the hit's sample.
double traceShaded(RayState &state, const Vec3 &origin, const Vec3 &direction, double colour[3], double refractionIndex,
                   unsigned mode, int extraFlags = 0);

// The rules that a mode word stands for.
HitRules rulesOf(unsigned mode);

} // namespace velm::host
