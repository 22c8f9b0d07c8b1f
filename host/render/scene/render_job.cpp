#include "host/render/scene/render_job.h"

#include "host/base/error.h"
#include "host/render/motion/pose.h"
#include "module/host.h"

#include <algorithm>
#include <cmath>
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
    const int mostThreads = job.order == RenderOrder::classic ? int{kMaxThreads} : kMostWorkers;
    require(job.threads >= 0 && job.threads <= mostThreads,
            fmt::format("there can be 1 to {} render threads{}", mostThreads,
                        job.order == RenderOrder::classic ? " in classic order" : ""));
    require(job.firstSample >= 0 && samplesOf(job) >= 1 && job.firstSample + samplesOf(job) <= job.samples,
            fmt::format("the samples to be rendered are not among the {} of a pixel", job.samples));
    require(job.niceness >= 0 && job.niceness <= kLeastPriority,
            fmt::format("the niceness of render threads has to be 0 to {}", kLeastPriority));
    require(job.recursionDepth >= 0 && job.recursionDepth <= kMaxRecursionDepth,
            fmt::format("the recursion depth has to be 0 to {}", kMaxRecursionDepth));
    const auto liesInPicture = [&job](const Region &region) {
        return region.left >= 0 && region.top >= 0 && !region.isEmpty() && region.right <= job.width &&
               region.bottom <= job.height;
    };
    require(
        liesInPicture(regionOf(job)) && liesInPicture(windowOf(job)),
        fmt::format("the region to be rendered does not lie in the picture of {} by {} pixels", job.width, job.height));
}

Region regionOf(const RenderJob &job) {
    return job.region == Region{} ? Region{.left = 0, .top = 0, .right = job.width, .bottom = job.height} : job.region;
}

Region windowOf(const RenderJob &job) {
    return job.part == Region{} ? regionOf(job) : intersection(regionOf(job), job.part);
}

int samplesOf(const RenderJob &job) { return (job.endSample == 0 ? job.samples : job.endSample) - job.firstSample; }

Region pixelsOfPicture(const Part &part, int width, int height) {
    const auto edge = [](double fraction, int side) { return static_cast<int>(std::lround(fraction * side)); };
    const int left = std::min(edge(part[0], width), width - 1), top = std::min(edge(part[1], height), height - 1);
    return {.left = left,
            .top = top,
            .right = std::max(edge(part[2], width), left + 1),
            .bottom = std::max(edge(part[3], height), top + 1)};
}

RenderJob renderJob(const RenderDescription &description) {
    RenderJob job;
    job.width = description.width;
    job.height = description.height;
    if (description.region != kWholePicture) job.region = pixelsOfPicture(description.region, job.width, job.height);
    job.samples = description.samples;
    job.recursionDepth = description.recursionDepth;
    job.frame = description.firstFrame;
    job.time = startTime(description);
    job.camera = description.camera;
    return job;
}

} // namespace velm::host
