// The items of a scene, as shading samples refer to them.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::host {
struct Mesh;
}

// An object, light or camera. An opaque handle of the plug-in interface; it lives as long as its RenderScene.
struct HostItem {
    int type = kItemObject; // kItemObject, kItemLight or kItemCamera
    int index = 0;          // among the scene's items of that type; -1 for one that is no longer in the scene
    std::string name;
    const velm::host::Mesh *mesh = nullptr; // of an object
};
