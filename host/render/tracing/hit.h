// The shading sample of a hit.
#pragma once

#include "host/render/tracing/ray_state.h"

namespace velm::host {

// The ray that made a hit: what Embree's record of it does not say.
struct IncomingRay {
    Vec3 direction;         // unit length
    double refractionIndex; // of the medium that it travelled in
    int flags;              // kRayShadow, kRaySampled, kRayToOutside; the other flags follow from the hit
};

// Fills every member of `sample`, and `origin`, the origin of rays from that sample. `state.origin` has to be the
// origin of the incoming ray. The sample's ray source is the point where the ray started after it was moved off its
// surface and rounded, so that the vector from there to the position is the ray's direction however short the ray is.
// [render threads]
void fillSample(const RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
                RayOrigin &origin);

} // namespace velm::host
