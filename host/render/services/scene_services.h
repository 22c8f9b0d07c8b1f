// What nodes learn of the scene through services.
#pragma once

#include "host/render/scene/camera.h"
#include "host/render/scene/current_scene.h"
#include "host/render/scene/render_job.h"
#include "host/render/scene/render_scene_data.h"

namespace velm::host {

// Offers the scene's objects and items, and the cameras' rays and films, for the life of the program; they tell of the
// current scene. Nodes that want them can only be made afterwards. Offering them again changes nothing.
// [interface thread; not while rendering]
void offerSceneServices();

// The tables of the services that tell of it, with functions that answer also where there is no scene. They live as
// long as the program.
const HostSceneObjects *sceneObjects();
const HostItemInfo *itemInfo();
const HostCameraEvaluation *cameraEvaluation();
const HostCameraInfo *cameraInfo();

// For as long as a frame is rendered: makes its world the current scene, puts the world's backdrop, camera view and
// scene facts in place, and on its end what was there before; the backdrop is then none. [between frames]
class SceneServices {
  public:
    SceneServices(const RenderSceneData &world, const RenderJob &job, const Region &region, int threads,
                  const RenderCamera &cameraItem, const Camera &camera);
    ~SceneServices();
    SceneServices(const SceneServices &) = delete;
    SceneServices &operator=(const SceneServices &) = delete;

  private:
    CurrentScene previousScene_;
    HostSceneInfo previousFacts_;
    CameraView previousView_;
};

} // namespace velm::host
