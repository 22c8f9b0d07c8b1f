// The layers of a picture: what they take from the samples of the camera.
#pragma once

#include "host/graph/node.h"
#include "host/graph/surface.h"
#include "host/image/layers.h"
#include "host/render/scene/render_scene_data.h"

#include <embree3/rtcore.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

enum class LayerKind { depth, normal, position, albedo, object, surface, samples, node };

// A layer, found in a scene.
struct PlannedLayer {
    LayerKind kind;
    std::size_t channels; // 1 or 3
    // Of node outputs: for each surface of the scene, an input of no node that is connected to the output, or to none.
    std::vector<HostInput> inputs;
};

// The layers of a job, in a scene.
class LayerPlan {
  public:
    // InputError, with what there is, for a name that is neither that of a layer nor of an output of a node. Layers
    // that are named twice count once. The scene has to outlive the plan. [between frames]
    LayerPlan(const RenderSceneData &scene, const std::vector<std::string> &names);

    const std::vector<PlannedLayer> &layers() const { return layers_; }
    // The names of the channels, such as "normal.X", in the order of the layers.
    const std::vector<std::string> &channels() const { return channels_; }
    const std::vector<LayerRule> &rules() const { return rules_; } // of the channels

  private:
    void add(const RenderSceneData &scene, const std::string &name);

    std::vector<PlannedLayer> layers_;
    std::vector<std::string> channels_;
    std::vector<LayerRule> rules_;
};

// Records the layers' values of the first surface that each camera ray hits. One for each render thread.
class LayerRecorder {
  public:
    explicit LayerRecorder(const LayerPlan &plan) : plan_(plan) {}

    // Begins a sample of the camera. `values` has room for all channels, and gets those of a ray that hits nothing.
    // [render threads]
    void begin(double *values);
    // The direction along which depth is measured: the camera's, at the time of the sample. Unit length.
    void setForward(const Vec3 &forward) { forward_ = forward; }

    // To be called for each sample that was shaded, with the surface's values. Ignores all but the first of the
    // camera's ray. While nodes are evaluated, `sample` has to be the origin of the thread's rays. [render threads]
    void record(const RenderSceneData &scene, const RTCHit &hit, ShadingSample &sample, const SurfaceValues &surface);

  private:
    const LayerPlan &plan_;
    Vec3 forward_;
    double *values_ = nullptr; // null: they are already recorded
};

} // namespace velm::host
