// The "LW Item Info 4" service: the objects, lights and cameras of the current scene, in the scene's order. Parents
// and target items are not reported, and no item has bones.
#include "host/base/thread_role.h"
#include "host/render/scene/current_scene.h"
#include "host/render/services/scene_services.h"

namespace velm::host {
namespace {

// Handles are opaque; nobody writes through them.
HostItem *handle(const HostItem *item) { return const_cast<HostItem *>(item); }

HostItem *itemAt(int type, int index) {
    const RenderSceneData *scene = currentScene().scene;
    return scene ? handle(scene->item(type, static_cast<std::size_t>(index))) : nullptr;
}

HostItem *first(int type, HostItem *parent) {
    assertInterface();
    return parent ? nullptr : itemAt(type, 0);
}

HostItem *next(HostItem *item) {
    assertInterface();
    const HostItem *known = currentItem(item);
    return known ? itemAt(known->type, known->index + 1) : nullptr;
}

HostItem *noItem(HostItem *) { return nullptr; }

int type(HostItem *item) {
    assertInterface();
    const HostItem *known = currentItem(item);
    return known ? known->type : -1;
}

const char *name(HostItem *item) {
    assertInterface();
    const HostItem *known = currentItem(item);
    return known ? known->name.c_str() : nullptr;
}

constexpr HostItemInfo kItemInfo = {
    .first = first,
    .next = next,
    .firstChild = noItem,
    .nextChild = [](HostItem *, HostItem *) -> HostItem * { return nullptr; },
    .parent = noItem,
    .target = noItem,
    .goal = noItem,
    .type = type,
    .name = name,
};

} // namespace

const HostItemInfo *itemInfo() { return &kItemInfo; }

} // namespace velm::host
