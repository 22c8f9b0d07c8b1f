// Whole pictures written by hand straight on Embree: what the nodes and their host are measured against. The same
// camera rays, and from each place that they hit the rays that the nodes would send; no node, no network, no sample
// record.
#pragma once

#include "bench/reference_mt19937.h"
#include "host/render/geometry/vector.h"
#include "host/render/renderer.h"
#include "host/render/scene/render_scene_data.h"

#include <cstdint>
#include <functional>

namespace velm::host::bench {

// What a thread keeps: a random stream of its own, and the count of its rays.
struct PlainTracer {
    const RenderSceneData &world;
    ReferenceTwister twister;
    RTCIntersectContext context{};
    uint64_t rays = 0;

    PlainTracer(const RenderSceneData &worldData, uint32_t seed);

    // The nearest hit, left in `ray`.
    bool trace(const Vec3 &origin, const Vec3 &direction, RTCRayHit &ray);
    // The smooth normal at a hit, on the side of the viewer.
    Vec3 normalAt(const RTCRayHit &ray) const;
};

// What one place of the picture shows.
struct PlainHit {
    const RTCRayHit &ray;
    Vec3 place, view; // the view from the camera, of unit length
};
using PlainShader = std::function<Vec3(PlainTracer &tracer, const PlainHit &hit)>;

struct PlainPicture {
    uint64_t rays = 0;
    double seconds = 0;
    Vec3 mean; // of all pixels, for a look at the whole
};

// Renders the world's first camera, in the tiles of the renderer. `threads` threads.
PlainPicture renderPlain(const RenderScene &world, const RenderJob &job, int threads, const PlainShader &shader);

// Ambient Occlusion with its defaults, but for what stands here.
struct OcclusionSettings {
    bool polar = false;   // rings of jittered rays about the axis; else random ones
    bool colours = false; // what is free shows the backdrop in the ray's direction; else the openness alone
};
PlainShader plainOcclusion(const OcclusionSettings &settings);

// Gaussian Reflections, 8 rays jittered by `blur`; rays that miss show the image of this file, read and looked up by
// OpenImageIO, those that hit are black.
PlainShader plainReflections(double blur, const std::string &image);

} // namespace velm::host::bench
