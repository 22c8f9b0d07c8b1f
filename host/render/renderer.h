// One frame of a World, as a picture.
#pragma once

#include "host/image/picture.h"
#include "host/render/world.h"

#include <cstdint>
#include <string>

namespace velm {

// A part of the picture: columns left to right - 1, rows top to bottom - 1. All zero stands for the whole picture.
struct Region {
    int left = 0, top = 0, right = 0, bottom = 0;
};

struct RenderJob {
    int width = 640, height = 360;
    Region region;
    int samples = 1;        // anti-aliasing samples of a pixel
    int threads = 0;        // 1 to kMaxThreads; 0 stands for the machine's cores
    int recursionDepth = 8; // bounces, 0 to kMaxRecursionDepth
    int frame = 1;
    double time = 0;    // seconds
    std::string camera; // by name; the first one when empty
};

constexpr int kMaxRecursionDepth = 256;

// The scene's own settings, for its first frame.
RenderJob renderJob(const RenderDescription &description);

// Told of finished work on the thread that called renderFrame: soon after the first tile, about every 50 ms as long as
// tiles are finished, and of the last one.
class ProgressSink {
  public:
    virtual ~ProgressSink() = default;
    // `done` of `total` tiles. False cancels: the tiles under way are finished, no more are begun.
    virtual bool progress(int done, int total) = 0;
};

// Rays by what cast them.
struct RayCounts {
    std::uint64_t camera = 0; // of the camera
    std::uint64_t cast = 0;   // distance only: ray casts and traces in distance mode
    std::uint64_t shaded = 0; // mirrored, refracted and shaded rays of surfaces and of nodes
    std::uint64_t shadow = 0; // towards lights, and traces in shadow and occlusion mode

    std::uint64_t total() const { return camera + cast + shaded + shadow; }
    RayCounts &operator+=(const RayCounts &other);
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
Frame renderFrame(const World &world, const RenderJob &job, ProgressSink *sink = nullptr);

} // namespace velm
