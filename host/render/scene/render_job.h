// What to render of a scene, and how.
#pragma once

#include "host/base/limits.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// A part of the picture: columns left to right - 1, rows top to bottom - 1. All zero: the whole picture.
struct Region {
    int left = 0, top = 0, right = 0, bottom = 0;
};

struct RenderJob {
    int width = 640, height = 360;
    Region region;
    int samples = 1;        // anti-aliasing samples of a pixel
    int threads = 0;        // 1 to kMaxThreads; 0: one for each of the machine's cores
    int recursionDepth = 8; // bounces, 0 to kMaxRecursionDepth
    int frame = 1;
    double time = 0;    // seconds
    std::string camera; // name; empty: the first camera
    int niceness = 0;   // of the render threads, 0 to 19, on top of the process's own
};

// Throws InputError for a job that makes no sense, such as a region outside of the picture.
void checkJob(const RenderJob &job);

// The region that a job renders, never empty for a job that passed checkJob.
Region regionOf(const RenderJob &job);

// A job with the scene's own settings, for its first frame.
RenderJob renderJob(const RenderDescription &description);

} // namespace velm::host
