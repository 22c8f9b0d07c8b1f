// From a hit to the shading sample of its place.
#pragma once

#include "host/render/ray_state.h"

namespace velm {

// The ray that made a hit.
struct IncomingRay {
    Vec3 source, direction; // where it came from; unit length
    double refractionIndex; // of the medium that it travelled in
    int flags;              // kRayShadow, kRaySampled, kRayToOutside; the rest follows from the hit
};

// Fills the whole sample, and the caster of rays from there. Reads the state's caster as what cast the ray.
void fillSample(const RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
                Caster &caster);

} // namespace velm
