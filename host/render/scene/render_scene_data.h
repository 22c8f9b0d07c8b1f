// The contents of a RenderScene, for the renderer's own files.
#pragma once

#include "host/render/geometry/acceleration.h"
#include "host/render/geometry/item.h"
#include "host/render/geometry/mesh.h"
#include "host/render/geometry/transform.h"
#include "host/render/scene/lights.h"
#include "host/scene/format/description.h"
#include "host/services/backdrop.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace velm::host {

class Surface;

struct RenderSurface {
    Surface *surface;
    double smoothingAngle; // degrees
    bool doubleSided;
    bool flat() const { return !(smoothingAngle > 0); }
};

struct RenderObject {
    HostItem item;    // kItemObject
    std::string file; // that the mesh was read from; empty for a shape of our own
    Mesh mesh;
    Transform transform;
    std::vector<std::uint16_t> surfaces; // by the mesh's material: an index into RenderSceneData::surfaces
};

struct RenderCamera {
    HostItem item; // kItemCamera
    CameraDescription description;
};

struct RenderSceneData {
    std::string sceneName, sceneFile;
    RenderDescription render;
    std::vector<RenderSurface> surfaces;
    std::deque<RenderObject> objects; // a deque never moves its elements
    std::deque<Light> lights;
    std::deque<RenderCamera> cameras;
    std::unordered_set<const HostItem *> items; // of all of these
    std::vector<std::string> uvMapNames;        // of all meshes, without duplicates, in order of appearance
    Backdrop backdrop;
    Vec3 ambient; // ambient light: intensity times colour
    bool hasSingleSided = false;
    std::unique_ptr<Acceleration> acceleration; // over `objects`, in the same order

    // An item by its type and index; null beyond the last one, and for bones.
    const HostItem *item(int type, std::size_t index) const {
        const auto in = [index](const auto &things) { return index < things.size() ? &things[index].item : nullptr; };
        switch (type) {
        case kItemObject: return in(objects);
        case kItemLight: return in(lights);
        case kItemCamera: return in(cameras);
        default: return nullptr;
        }
    }

    const RenderSurface &surfaceOf(std::uint32_t object, std::uint32_t triangle) const {
        const RenderObject &owner = objects[object];
        return surfaces[owner.surfaces[owner.mesh.materialNumber(triangle)]];
    }
};

} // namespace velm::host
