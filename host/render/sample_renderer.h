// The camera samples of a frame.
#pragma once

#include "host/render/scene/camera.h"
#include "host/render/scene/pixel_filter.h"
#include "host/render/scene/render_job.h"
#include "host/render/services/scene_services.h"
#include "host/render/tracing/layer_plan.h"
#include "host/render/tracing/ray_state.h"

namespace velm::host {

// A pass over a frame, which adds samples to its pixels.
struct RenderPass {
    int samples;  // that a pixel has afterwards; at most those of the job
    int step = 1; // 1, 2, 4 or 8: only the upper left pixel of each block of step by step pixels
};

// The seed of the sample points of a pixel: different for each pixel, and for each frame unless the noise is locked.
std::uint32_t pixelSeed(const RenderJob &job, int x, int y);

// What all threads and processes that render a frame read.
class SampleRenderer {
  public:
    // Throws InputError for a camera or a layer that the scene does not have, and for invalid settings of the camera.
    // The scene and the job have to outlive it.
    SampleRenderer(const RenderSceneData &scene, const RenderJob &job);

    const RenderSceneData &scene() const { return scene_; }
    const RenderJob &job() const { return job_; }
    const RenderCamera &cameraItem() const { return cameraItem_; }
    const Camera &camera() const { return camera_.atOpening(); }

    const LayerPlan &layers() const { return layers_; }

    // The state that a render thread starts with.
    RayState initialState(int threadIndex) const;

    // Renders sample `index` of the pixel (x, y) of the picture, and writes its colour to `colour`. Returns the alpha:
    // 1 where the camera ray hit an object, 0 where the colour is the backdrop's (black if the job leaves it out), and
    // in between where the backdrop shows through objects that are partly dissolved. A pixel outside the camera's mask
    // has the mask's colour, and an alpha of 1. A recorder of layers in `state` has to have begun the sample. [render
    // threads]
    double render(RayState &state, int x, int y, std::uint32_t index, Vec3 &colour) const;

  private:
    struct PicturePoint {
        double x, y; // pixels
    };
    CameraRay cameraRay(const PicturePoint &point, double time, std::uint32_t index, std::uint32_t pixelSeed) const;

    const RenderSceneData &scene_;
    const RenderJob &job_;
    const RenderCamera &cameraItem_;
    const MovingCamera camera_;
    const double shutterPart_; // of the scene's shutter
    const Region mask_;        // the pixels that show the scene
    const bool allOpaque_;
    const PixelFilter filter_;
    const LayerPlan layers_;
};

// Offers the services that describe the scene, for as long as the result lives. `threads` is the number of render
// threads that they give to nodes. The renderer has to outlive the result. [between frames]
SceneServices servicesFor(const SampleRenderer &renderer, int threads);

// Makes the calling thread treat denormal numbers as zero while it lives, as Embree recommends: they are slow, and do
// not matter to a picture.
class DenormalsAreZero {
  public:
    DenormalsAreZero();
    ~DenormalsAreZero();
    DenormalsAreZero(const DenormalsAreZero &) = delete;
    DenormalsAreZero &operator=(const DenormalsAreZero &) = delete;

  private:
    unsigned previous_;
};

} // namespace velm::host
