// One frame of a World, as a picture.
#pragma once

#include "host/image/picture.h"
#include "host/render/scene/render_job.h"
#include "host/render/scene/render_scene.h"
#include "host/render/tracing/ray_counts.h"

#include <cstdint>
#include <string>

namespace velm::host {

// Told of finished work on the thread that called renderFrame: soon after the first tile, about every 50 ms as long as
// tiles are finished, and of the last one.
class ProgressSink {
  public:
    virtual ~ProgressSink() = default;
    // `done` of `total` tiles. False cancels: the tiles under way are finished, no more are begun.
    virtual bool progress(int done, int total) = 0;
};

struct RenderStatistics {
    double seconds = 0;
    int threads = 0;
    RayCounts rays;
    std::uint64_t samples = 0; // camera samples that hit something and were shaded
    std::size_t triangles = 0, accelerationBytes = 0;
};

struct Frame {
    Picture picture;      // width by height; what lies outside the region or was not reached stays black
    bool complete = true; // false when the sink cancelled
    RenderStatistics statistics;
};

// Renders one frame of a World that is prepared. Surfaces have to be initialised and set to the job's time by the
// caller. The picture does not depend on the number of threads, but for what nodes do with state of their own. `sink`
// may be null. [controller thread] Throws InputError for a job that makes no sense: no such camera, a region outside
// the picture.
Frame renderFrame(const RenderScene &scene, const RenderJob &job, ProgressSink *sink = nullptr);

} // namespace velm::host
