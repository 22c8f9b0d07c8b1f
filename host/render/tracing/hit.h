// From a hit to the shading sample of its place.
#pragma once

#include "host/render/tracing/ray_state.h"

namespace velm::host {

// The ray that made a hit, apart from what Embree's record tells.
struct IncomingRay {
    Vec3 direction;         // unit length
    double refractionIndex; // of the medium that it travelled in
    int flags;              // kRayShadow, kRaySampled, kRayToOutside; the rest follows from the hit
};

// Fills the whole sample, and the caster of rays from there. Reads the state's caster as what cast the ray. The ray
// source is where the ray really started, moved off its surface and rounded, so that the way from it to the position is
// the ray's direction however short it is.
void fillSample(const RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
                Caster &caster);

} // namespace velm::host
