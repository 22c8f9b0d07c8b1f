#include "host/render/scene/render_job.h"

namespace velm::host {

RenderJob renderJob(const RenderDescription &description) {
    RenderJob job;
    job.width = description.width;
    job.height = description.height;
    job.samples = description.samples;
    job.recursionDepth = description.recursionDepth;
    job.frame = description.firstFrame;
    job.time = description.firstFrame / description.framesPerSecond;
    job.camera = description.camera;
    return job;
}

} // namespace velm::host
