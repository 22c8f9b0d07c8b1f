// Whole pictures rendered by hand-written loops on Embree, which the nodes and their host are measured against. They
// use the same camera rays, and from each hit the same rays that the nodes would cast, but no nodes, no networks and no
// shading samples.
#pragma once

#include "bench/reference_mt19937.h"
#include "host/render/geometry/vector.h"
#include "host/render/renderer.h"
#include "host/render/scene/render_scene_data.h"

#include <cstdint>
#include <functional>

namespace velm::host::bench {

// The state of a thread: its own random stream, and the count of its rays.
struct PlainTracer {
    const RenderSceneData &scene;
    ReferenceTwister twister;
    RTCIntersectContext context{};
    uint64_t rays = 0;

    PlainTracer(const RenderSceneData &sceneData, uint32_t seed);

    // Finds the nearest hit and leaves it in `ray`; false when there is none.
    bool trace(const Vec3 &origin, const Vec3 &direction, RTCRayHit &ray);
    // The interpolated normal at a hit, turned to the viewer's side.
    Vec3 normalAt(const RTCRayHit &ray) const;
};

// The hit of a camera ray.
struct PlainHit {
    const RTCRayHit &ray;
    Vec3 position, view; // the view is the camera ray's direction, of unit length
};
using PlainShader = std::function<Vec3(PlainTracer &tracer, const PlainHit &hit)>;

struct PlainPicture {
    uint64_t rays = 0;
    double seconds = 0;
    Vec3 mean; // of all pixels, to compare pictures by
};

// Renders the scene's first camera, in tiles like the renderer's, on `threads` threads.
PlainPicture renderPlain(const RenderScene &scene, const RenderJob &job, int threads, const PlainShader &shader);

// Ambient Occlusion with its defaults, except for these settings.
struct OcclusionSettings {
    bool polar = false;   // rings of jittered rays about the axis; else random rays
    bool colours = false; // unoccluded rays add the backdrop's colour in their direction; else the openness alone
};
PlainShader plainOcclusion(const OcclusionSettings &settings);

// Gaussian Reflections with 8 rays jittered by `blur`. Rays that miss see the image of this file, read and looked up by
// OpenImageIO; rays that hit something are black.
PlainShader plainReflections(double blur, const std::string &image);

} // namespace velm::host::bench
