// Renders a frame in passes.
#pragma once

#include "host/image/picture.h"
#include "host/render/not_finite.h"
#include "host/render/order/choose_order.h"
#include "host/render/progress_sink.h"
#include "host/render/sample_renderer.h"
#include "host/render/scene/render_job.h"
#include "host/render/scene/render_scene.h"
#include "host/render/tracing/ray_counts.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>

namespace velm::host {

struct RenderStatistics {
    double seconds = 0; // in passes
    int threads = 0;    // or processes that rendered
    RenderOrder order = RenderOrder::repeatable;
    std::string orderReason; // for choosing classic order where the job left the choice; else empty
    RayCounts rays;
    std::uint64_t samples = 0; // camera samples that hit something and were shaded
    std::size_t triangles = 0, accelerationBytes = 0;
};

// The passes that show a first sample of every pixel, from coarse to fine. Each renders the pixels that those before
// left out; no sample is rendered twice.
inline constexpr RenderPass kCoarseToFine[] = {
    {.samples = 1, .step = 8}, {.samples = 1, .step = 4}, {.samples = 1, .step = 2}, {.samples = 1, .step = 1}};

// The order of evaluation for a job, which may leave the choice. May render a small picture in a process of its own, to
// find out whether nodes have a memory; the surfaces have to be initialised and set to the job's time for that. Throws
// as FrameRenderer's constructor. [between frames]
OrderChoice decideOrder(const RenderScene &scene, const RenderJob &job);

// One frame of a prepared RenderScene, rendered in one pass or many. Whatever the passes, the samples of a pixel are
// the same and are added in the same order. So once every pixel has all its samples, the picture is the same bit for
// bit; as it is for any number of workers. The exception is classic order with nodes that draw random numbers or have a
// memory, since these see the order of evaluation.
//
// In repeatable order, workers are processes forked from this one, or a single thread of it. In classic order, they are
// threads of this process.
//
// The surfaces have to be initialised and set to the job's time. The scene must live longer and not be updated, and
// surfaces and nodes must not change, or the frame has to be begun anew. One thread at a time may use a FrameRenderer;
// it acts as the render controller while it renders a pass.
class FrameRenderer {
  public:
    // Throws InputError for a job that makes no sense: no such camera, or a region outside of the picture.
    FrameRenderer(const RenderScene &scene, const RenderJob &job);
    ~FrameRenderer();
    FrameRenderer(const FrameRenderer &) = delete;
    FrameRenderer &operator=(const FrameRenderer &) = delete;

    // Renders a pass with the job's workers and waits for its end. Pixels that have the pass's samples already are left
    // alone. Returns false when it was cancelled: by the sink (may be null), or by `stop`, on which any thread may
    // request a stop. Then each worker finishes only the sample that it is at. The next pass goes on from there, in
    // repeatable order from the last complete unit of work. Rethrows what the sink throws, after cancelling.
    // ModuleError or MachineError when a worker's process crashed. [controller thread]
    bool renderPass(const RenderPass &pass, ProgressSink *sink = nullptr, const std::stop_token &stop = {});

    // Samples that every pixel of the region has.
    int samplesDone() const;

    // Each pixel shows the mean of its samples so far, or that of a neighbour after a coarse pass. What no pass
    // reached, or is outside the region, is black.
    const Picture &picture() const;
    // The picture, for a FrameRenderer that is not used any more.
    Picture takePicture();

    // Of the picture once it has all its samples. Throws as findNotFinite. [controller thread]
    NotFinitePixels notFinite() const;

    // Of all passes so far.
    RenderStatistics statistics() const;

  private:
    struct Work;
    std::unique_ptr<Work> work_;
};

} // namespace velm::host
