// Calls of a sample's ray functions. In a sample without a scene, as in a preview, these may be null: then a ray hits
// nothing and leaves its colour unchanged. Each returns the distance to the hit, or HOST_RAY_MISS. [render threads]
#pragma once

#include "module/host.h"

namespace velm::plugin {

inline double castRay(const ShadingSample &sample, const double origin[3], const double direction[3]) {
    return sample.rayCast ? sample.rayCast(origin, direction) : HOST_RAY_MISS;
}

inline double traceRay(const ShadingSample &sample, const double origin[3], const double direction[3], double colour[3],
                       double eta, unsigned int mode) {
    return sample.rayTraceMode ? sample.rayTraceMode(origin, direction, colour, eta, static_cast<int>(mode))
                               : HOST_RAY_MISS;
}

inline double shadeRay(const ShadingSample &sample, const double origin[3], const double direction[3],
                       HostRayHit *hit) {
    return sample.rayShade ? sample.rayShade(origin, direction, hit) : HOST_RAY_MISS;
}

} // namespace velm::plugin
