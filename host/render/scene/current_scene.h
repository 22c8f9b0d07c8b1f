// The scene that services tell of.
#pragma once

#include "host/render/scene/render_scene_data.h"

namespace velm::host {

// The World that was built last and still stands; while a frame is rendered, that of the frame. Without one there are
// no objects, lights, cameras or maps to tell of.
struct CurrentScene {
    const RenderSceneData *world = nullptr;
    int width = 0, height = 0; // of its picture, in pixels
};

// [render threads]
const CurrentScene &currentScene();

// Gives what it was before. [between frames]
CurrentScene setCurrentScene(const CurrentScene &scene);

// The item, where it is one of the current scene's; null for all others, and for items of a scene that is gone.
// [render threads]
const HostItem *currentItem(const HostItem *item);

} // namespace velm::host
