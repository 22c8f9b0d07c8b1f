// What nodes learn of the scene through services, for as long as a frame is rendered.
#pragma once

#include "host/render/camera.h"
#include "host/render/renderer.h"
#include "host/render/world_data.h"

namespace velm {

// Puts the world's backdrop, camera view and scene facts in place, and on its end what was there before; the backdrop
// is then none. [between frames]
class SceneServices {
  public:
    SceneServices(const WorldData &world, const RenderJob &job, const Region &region, int threads,
                  const WorldCamera &cameraItem, const Camera &camera);
    ~SceneServices();
    SceneServices(const SceneServices &) = delete;
    SceneServices &operator=(const SceneServices &) = delete;

  private:
    HostSceneInfo previousFacts_;
    CameraView previousView_;
};

} // namespace velm
