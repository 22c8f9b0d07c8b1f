#include "host/render/scene/render_job.h"

#include "host/base/error.h"
#include "module/host.h"

#include <fmt/format.h>

namespace velm::host {

void checkJob(const RenderJob &job) {
    constexpr int kLeastPriority = 19; // the largest nice value of the system
    const auto require = [](bool holds, const std::string &what) {
        if (!holds) throw InputError(what);
    };
    require(job.width >= 1 && job.height >= 1 && job.width <= kLargestSide && job.height <= kLargestSide,
            fmt::format("a picture has to be 1 to {} pixels wide and high", kLargestSide));
    require(job.samples >= 1, "a pixel has to have at least 1 sample");
    require(job.threads >= 0 && job.threads <= kMaxThreads,
            fmt::format("there can be 1 to {} render threads", int{kMaxThreads}));
    require(job.niceness >= 0 && job.niceness <= kLeastPriority,
            fmt::format("the niceness of render threads has to be 0 to {}", kLeastPriority));
    require(job.recursionDepth >= 0 && job.recursionDepth <= kMaxRecursionDepth,
            fmt::format("the recursion depth has to be 0 to {}", kMaxRecursionDepth));
    const Region region = regionOf(job);
    require(
        region.left >= 0 && region.top >= 0 && region.left < region.right && region.top < region.bottom &&
            region.right <= job.width && region.bottom <= job.height,
        fmt::format("the region to be rendered does not lie in the picture of {} by {} pixels", job.width, job.height));
}

Region regionOf(const RenderJob &job) {
    const Region &region = job.region;
    const bool whole = region.left == 0 && region.top == 0 && region.right == 0 && region.bottom == 0;
    return whole ? Region{.left = 0, .top = 0, .right = job.width, .bottom = job.height} : region;
}

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
