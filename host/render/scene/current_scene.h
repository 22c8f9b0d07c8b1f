// The scene that the services describe.
#pragma once

#include "host/render/scene/render_scene_data.h"

namespace velm::host {

// The RenderScene that was built last, if it still exists; while a frame is rendered, that of the frame. Without one,
// services list no objects, lights, cameras or maps.
struct CurrentScene {
    const RenderSceneData *scene = nullptr;
    int width = 0, height = 0; // of its picture, in pixels
};

// [render threads]
const CurrentScene &currentScene();

// Returns the previous one. [between frames]
CurrentScene setCurrentScene(const CurrentScene &scene);

// `item` if it belongs to the current scene, else null; the handle of a scene that no longer exists is fine.
// [render threads]
const HostItem *currentItem(const HostItem *item);

} // namespace velm::host
