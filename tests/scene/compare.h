// Compares descriptions of scenes without their source locations.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host::test {

inline void clearLocations(std::vector<SettingDescription> &settings) {
    for (SettingDescription &setting : settings) setting.location = {};
}

inline void clearLocations(NetworkDescription &network) {
    network.location = {};
    for (ConnectionDescription &connection : network.connections) connection.location = {};
    for (NodeDescription &node : network.nodes) {
        node.location = {};
        clearLocations(node.settings);
        for (NetworkDescription &inside : node.network) clearLocations(inside);
    }
}

inline SceneDescription withoutLocations(SceneDescription scene) {
    scene.surfaceFileLocation = scene.render.cameraLocation = scene.backdrop.location = {};
    const auto forget = [](auto &items) {
        for (ItemDescription &item : items) item.location = item.parentLocation = item.targetLocation = {};
    };
    forget(scene.cameras);
    forget(scene.lights);
    forget(scene.nulls);
    forget(scene.objects);
    for (ObjectDescription &object : scene.objects)
        for (InstanceDescription &instance : object.instances) instance.location = {};
    for (ImageDescription &image : scene.images) image.location = image.fileLocation = {};
    for (ObjectDescription &object : scene.objects)
        for (SurfaceUse &use : object.surfaces) use.location = {};
    for (SurfaceDescription &surface : scene.surfaces) {
        surface.location = {};
        clearLocations(surface.settings);
        clearLocations(surface.saved.settings);
        clearLocations(surface.network);
    }
    return scene;
}

} // namespace velm::host::test
