#include "host/render/renderer.h"

namespace velm::host {

Frame renderFrame(const RenderScene &scene, const RenderJob &job, ProgressSink *sink) {
    FrameRenderer renderer(scene, job);
    const bool complete = renderer.renderPass({.samples = job.samples}, sink);
    return {.picture = renderer.takePicture(), .complete = complete, .statistics = renderer.statistics()};
}

} // namespace velm::host
