// The services that describe the current scene to nodes.
#pragma once

#include "host/render/scene/camera.h"
#include "host/render/scene/current_scene.h"
#include "host/render/scene/render_job.h"
#include "host/render/scene/render_scene_data.h"

namespace velm::host {

// Offers the services for the scene's objects and items, and for the cameras' rays and films, for the rest of the
// program's life. They describe the current scene. Nodes look services up when they are created, so this comes first.
// Offering them again changes nothing.
// [interface thread; not while rendering]
void offerSceneServices();

// The tables of these services. Their functions may also be called without a current scene. They live as long as the
// program.
const HostSceneObjects *sceneObjects();
const HostItemInfo *itemInfo();
const HostCameraEvaluation *cameraEvaluation();
const HostCameraInfo *cameraInfo();

// While a frame is rendered: makes its scene the current one and gives its backdrop, camera view and facts to the
// services. The destructor restores what was there before, and sets no backdrop. [between frames]
class SceneServices {
  public:
    SceneServices(const RenderSceneData &scene, const RenderJob &job, const Region &region, int threads,
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
