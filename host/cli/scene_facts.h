// What nodes may ask of the scene and the render, while it runs.
#pragma once

#include "host/cli/options.h"
#include "host/render/renderer.h"

namespace velm {

// Offers the facts as "LW Scene Info 5" as long as it lives. One at a time; `scene` and `world` outlive it.
// [between frames]
class SceneFacts {
  public:
    SceneFacts(const SceneDescription &scene, const World &world, const RenderJob &job, FrameRange frames);
    ~SceneFacts();
    SceneFacts(const SceneFacts &) = delete;
    SceneFacts &operator=(const SceneFacts &) = delete;
};

} // namespace velm
