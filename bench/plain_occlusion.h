// The ambient occlusion of a picture, written by hand straight on Embree: what the node and its host are measured
// against. The same camera rays, the same directions from a generator of the same kind, the same weights; no node, no
// network, no sample record.
#pragma once

#include "bench/reference_mt19937.h"
#include "host/render/renderer.h"

#include <cstdint>
#include <vector>

namespace velm::bench {

struct OcclusionSettings {
    int samples = 27;
    double coneAngle = 1.5707963267948966, max = 5.0; // radians, metres
};

struct PlainResult {
    uint64_t rays = 0;
    double seconds = 0;
    std::vector<float> openness; // one value for each pixel, for a look at the whole
};

// Renders the world's first camera. `threads` threads, each with a stream of its own.
PlainResult renderPlainOcclusion(const World &world, const RenderJob &job, const OcclusionSettings &settings,
                                 int threads);

} // namespace velm::bench
