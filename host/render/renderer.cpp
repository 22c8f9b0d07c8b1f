#include "host/render/renderer.h"

#include <utility>

namespace velm::host {

Frame renderFrame(const RenderScene &scene, const RenderJob &job, ProgressSink *sink) {
    FrameRenderer renderer(scene, job);
    const bool complete = renderer.renderPass({.samples = samplesOf(job)}, sink);
    NotFinitePixels notFinite;
    if (complete) notFinite = renderer.notFinite();
    return {.picture = renderer.takePicture(),
            .complete = complete,
            .notFinite = std::move(notFinite),
            .statistics = renderer.statistics()};
}

} // namespace velm::host
