// Evaluates a value at the points that the pixels of a picture stand for: texels of a UV map, corners of a mesh. The
// work is divided into the units of a rendered picture, so that the result does not depend on the number of workers.
#pragma once

#include "host/bake/evaluate_point.h"
#include "host/render/frame_renderer.h"
#include "host/render/geometry/sampling.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace velm::host {

// Gives the points of pixels. Each worker has its own.
class PointSource {
  public:
    virtual ~PointSource() = default;

    // Sets `point` to the point of a sample of the pixel (x, y). `random` is the sample's place in the pixel: its
    // middle if `isOnlySample`. Returns the alpha of the pixel, or 0 for a pixel without points: then `point` is not
    // used. Pixels are asked for tile by tile (see kTileSize). [render threads]
    virtual double find(int x, int y, const UnitSquare &random, bool isOnlySample, SurfacePoint &point) = 0;

    // Converts the value of a point, for example to other coordinates. [render threads]
    virtual Vec3 convert(const SurfacePoint & /*point*/, const Vec3 &value) const { return value; }
};

struct BakedPoints {
    Picture picture;      // the mean of each pixel's samples; black where it has no points
    bool complete = true; // false when the sink cancelled
    RenderStatistics statistics;
};

// Evaluates job.samples points of each pixel of a picture of job.width by job.height, in repeatable order, with
// job.threads worker processes. `makeSource` is called once in each. The surfaces have to be initialised and set to the
// job's time. `sink` may be null. InputError for a job that makes no sense and for a scene without a camera, which
// nodes may ask for; ModuleError or MachineError when a worker's process crashed. [controller thread]
BakedPoints bakePoints(const RenderScene &scene, const RenderJob &job, const PointEvaluator &evaluator,
                       const std::function<std::unique_ptr<PointSource>()> &makeSource, ProgressSink *sink);

} // namespace velm::host
