// What nodes learn of the scene through services.
#pragma once

#include "host/render/camera.h"
#include "host/render/current_scene.h"
#include "host/render/renderer.h"
#include "host/render/world_data.h"

namespace velm {

// Offers the scene's objects and items, and the cameras' rays and films, for the life of the program; they tell of the
// current scene. Nodes that want them can only be made afterwards. Offering them again changes nothing.
// [interface thread; not while rendering]
void offerSceneServices();

// For as long as a frame is rendered: makes its world the current scene, puts the world's backdrop, camera view and
// scene facts in place, and on its end what was there before; the backdrop is then none. [between frames]
class SceneServices {
  public:
    SceneServices(const WorldData &world, const RenderJob &job, const Region &region, int threads,
                  const WorldCamera &cameraItem, const Camera &camera);
    ~SceneServices();
    SceneServices(const SceneServices &) = delete;
    SceneServices &operator=(const SceneServices &) = delete;

  private:
    CurrentScene previousScene_;
    HostSceneInfo previousFacts_;
    CameraView previousView_;
};

} // namespace velm
