// What to render of a scene, and how.
#pragma once

#include "host/base/limits.h"
#include "host/base/region.h"
#include "host/render/scene/pixel_filter.h"
#include "host/scene/format/description.h"
#include "module/host.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// In which order samples are evaluated. It matters for nodes that draw from the module's random stream or keep a state
// from one evaluation to the next.
enum class RenderOrder {
    automatic,  // repeatable, but classic for scenes with nodes that need it
    repeatable, // in units of work, each of which begins from a known state: the same picture however it is divided
    classic     // on threads of one process, with state and stream running on from sample to sample, as in LightWave
};

struct RenderJob {
    int width = 640, height = 360;
    Region region;          // only these pixels are rendered; all zero: the whole picture
    Region part;            // likewise, but nodes do not know of it: a part of the region that is rendered elsewhere
    int samples = 1;        // anti-aliasing samples of a pixel
    int firstSample = 0;    // of those that are rendered; the others are rendered elsewhere
    int endSample = 0;      // one more than the last of them; 0: all
    int threads = 0;        // workers: 1 to kMostWorkers, in classic order to kMaxThreads; 0: one for each core
    int recursionDepth = 8; // bounces, 0 to kMaxRecursionDepth
    int frame = 1;
    double time = 0;    // seconds
    std::string camera; // name; empty: the first camera
    int niceness = 0;   // of the render threads, 0 to 19, on top of the process's own
    RenderOrder order = RenderOrder::automatic;
    int initMode = kInitRender;      // how the surfaces were initialised: kInitRender or kInitPreview
    std::uint32_t seed = 0;          // chooses one of many patterns of noise
    bool lockNoise = false;          // the same pattern in all frames
    FilterDescription filter;        // of the samples of a pixel; no effect with 1 sample, which is at its middle
    std::vector<std::string> layers; // names, as of LayerPlan
    bool backdropLeftOut = false;    // camera rays that hit nothing add black instead of the backdrop
};

// Throws InputError for a job that makes no sense, such as a region outside of the picture.
void checkJob(const RenderJob &job);

// The region that a job renders as nodes know it, and that with the job's part; never empty for a job that passed
// checkJob.
Region regionOf(const RenderJob &job);
Region windowOf(const RenderJob &job);

// The pixels of a part of a picture: those whose edges are nearest to the part's, and at least one.
Region pixelsOfPicture(const Part &part, int width, int height);

// The number of samples of a pixel that a job renders.
int samplesOf(const RenderJob &job);

// A job with the scene's own settings, for its first frame.
RenderJob renderJob(const RenderDescription &description);

} // namespace velm::host
