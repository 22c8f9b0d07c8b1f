// Renders a whole frame at once.
#pragma once

#include "host/render/frame_renderer.h"

namespace velm::host {

struct Frame {
    Picture picture;           // width by height; what is outside the region or was not reached is black
    bool complete = true;      // false when the sink cancelled
    NotFinitePixels notFinite; // of a complete picture
    RenderStatistics statistics;
};

// Renders one frame of a prepared RenderScene in a single pass; see FrameRenderer. `sink` may be null.
// [controller thread]
Frame renderFrame(const RenderScene &scene, const RenderJob &job, ProgressSink *sink = nullptr);

} // namespace velm::host
