// The things of a scene, as shading samples name them.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::host {
struct Mesh;
}

// An object, light or camera. The opaque handle of the wall; it lives as long as its World.
struct HostItem {
    int type = kItemObject; // kItemObject, kItemLight or kItemCamera
    int index = 0;          // its place among the scene's items of that type
    std::string name;
    const velm::host::Mesh *mesh = nullptr; // of an object
};
