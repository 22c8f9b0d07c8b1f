#include "host/render/scene/current_scene.h"

#include "host/base/thread_role.h"

#include <utility>

namespace velm::host {
namespace {

CurrentScene current;

} // namespace

const CurrentScene &currentScene() { return current; }

CurrentScene setCurrentScene(const CurrentScene &scene) {
    assertBetweenFrames();
    return std::exchange(current, scene);
}

const HostItem *currentItem(const HostItem *item) {
    return current.scene && current.scene->items.contains(item) ? item : nullptr;
}

} // namespace velm::host
