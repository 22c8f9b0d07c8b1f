// The camera samples of a frame's pixels.
#pragma once

#include "host/guard/call_record.h"
#include "host/render/frame_tiles.h"
#include "host/render/scene/camera.h"
#include "host/render/scene/render_job.h"
#include "host/render/tracing/ray_state.h"

#include <atomic>

namespace velm::host {

// A pass over a frame, which adds samples to its pixels.
struct RenderPass {
    int samples;  // that a pixel has afterwards; at most those of the job
    int step = 1; // 1, 2, 4, 8 or 16: only the upper left pixel of each block of step by step pixels
};

// What all threads that render a frame read.
class TileRenderer {
  public:
    // Throws InputError for a camera that the scene does not have or that has invalid settings. The scene and the job
    // have to outlive it.
    TileRenderer(const RenderSceneData &scene, const RenderJob &job);

    const RenderCamera &cameraItem() const { return cameraItem_; }
    const Camera &camera() const { return camera_; }

    // The state that a render thread starts with.
    RayState initialState(int threadIndex) const;

    // Adds the samples of a pass to the sums of the pixels of `region`, a tile. Looks at `stop` before each sample, and
    // returns false as soon as it is set. Counts finished samples as steps of `slot`. [render threads]
    bool renderTile(RayState &state, SlotScope &slot, const Region &region, const RenderPass &pass, PixelSum *sums,
                    const std::atomic<bool> &stop) const;

  private:
    bool renderPixel(RayState &state, SlotScope &slot, std::uint32_t samples, PixelSum &pixel,
                     const std::atomic<bool> &stop) const;
    bool renderSample(RayState &state, const CameraRay &view, Vec3 &sum) const;

    const RenderSceneData &scene_;
    const RenderJob &job_;
    const RenderCamera &cameraItem_;
    const Camera camera_;
    const bool allOpaque_;
};

} // namespace velm::host
