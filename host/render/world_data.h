// What a World is made of, for the renderer's own files.
#pragma once

#include "host/render/acceleration.h"
#include "host/render/item.h"
#include "host/render/lights.h"
#include "host/render/mesh.h"
#include "host/render/transform.h"
#include "host/scene/description.h"
#include "host/services/backdrop.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace velm {

class Surface;

struct WorldSurface {
    Surface *surface;
    double smoothingAngle; // degrees
    bool doubleSided;
    bool flat() const { return !(smoothingAngle > 0); }
};

struct WorldObject {
    HostItem item;    // kItemObject
    std::string file; // that the mesh was read from; empty for a shape of our own
    Mesh mesh;
    Transform transform;
    std::vector<std::uint16_t> surfaces; // by the mesh's material, a number of WorldData::surfaces
};

struct WorldCamera {
    HostItem item; // kItemCamera
    CameraDescription description;
};

struct WorldData {
    std::string sceneName, sceneFile;
    RenderDescription render;
    std::vector<WorldSurface> surfaces;
    std::deque<WorldObject> objects; // a deque: its elements and the buffers in them stay where they are
    std::deque<Light> lights;
    std::deque<WorldCamera> cameras;
    std::unordered_set<const HostItem *> items; // of all of these
    std::vector<std::string> uvMapNames;        // of all meshes, each once, as they come
    Backdrop backdrop;
    Vec3 ambient; // light from everywhere
    bool hasSingleSided = false;
    std::unique_ptr<Acceleration> acceleration; // over `objects`, in their order

    // An item by its type and place; null beyond the last, and for bones.
    const HostItem *item(int type, std::size_t index) const {
        const auto in = [index](const auto &things) { return index < things.size() ? &things[index].item : nullptr; };
        switch (type) {
        case kItemObject: return in(objects);
        case kItemLight: return in(lights);
        case kItemCamera: return in(cameras);
        default: return nullptr;
        }
    }

    const WorldSurface &surfaceOf(std::uint32_t object, std::uint32_t triangle) const {
        const WorldObject &owner = objects[object];
        return surfaces[owner.surfaces[owner.mesh.materialNumber(triangle)]];
    }
};

} // namespace velm
