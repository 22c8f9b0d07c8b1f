// The contents of a RenderScene, for the renderer's own files.
#pragma once

#include "host/render/geometry/acceleration.h"
#include "host/render/geometry/bounds.h"
#include "host/render/geometry/item.h"
#include "host/render/geometry/mesh.h"
#include "host/render/geometry/mesh_motion.h"
#include "host/render/geometry/transform.h"
#include "host/render/motion/paths.h"
#include "host/render/scene/camera.h"
#include "host/render/scene/fog.h"
#include "host/render/scene/lights.h"
#include "host/render/scene/scene_work.h"
#include "host/scene/format/description.h"
#include "host/services/backdrop.h"
#include "host/services/item_place_provider.h"

#include <cstdint>
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
    Bounds bounds; // of all polygons with the surface
    bool flat() const { return !(smoothingAngle > 0); }
};

struct RenderObject {
    HostItem *item;              // kItemObject
    ShapeDescription shape;      // that the mesh was made of
    std::shared_ptr<Mesh> model; // the mesh in object coordinates, of an object that moves or shares it; else null
    int modelNumber;             // counts as meshNumber does
    int meshNumber; // counts meshes that are made or placed; one that only gets other normals keeps its number
    // In world space; or, of an instance, the model. Changes only until an acceleration structure is built over it.
    std::shared_ptr<Mesh> mesh;
    bool isInstance;                          // of the model, which only then may have normals from smoothNormals
    bool moves;                               // from frame to frame
    std::vector<Bounds> bounds;               // by the mesh's material
    Transform transform;                      // to world space, with which the mesh was made or placed
    ItemPath path;                            // while the scene's shutter is open
    std::shared_ptr<const MeshMotion> motion; // of `mesh`; null: the path is empty, or this is an instance
    std::vector<std::uint16_t> surfaces;      // by the mesh's material: an index into RenderSceneData::surfaces
    bool seenByCamera, seenByRays, castsShadows;
    double dissolve = 0; // 0 to less than 1, or invisible

    // A corner of a triangle in world space, at a time while the shutter is open, from 0 to 1, for which `now` is the
    // object's transform. [render threads]
    Vec3 corner(std::uint32_t triangle, int which, double time, const Transform &now) const {
        if (isInstance) return now.pointToWorld(mesh->corner(triangle, which));
        return motion ? motion->corner(triangle, which, time) : mesh->corner(triangle, which);
    }
};

struct RenderLight {
    HostItem *item; // kItemLight
    Light light;
};

struct RenderCamera {
    HostItem *item;                // kItemCamera
    CameraDescription description; // at the scene's time
    Transform transform;
    std::vector<CameraStep> later; // the steps after the first, while the scene's shutter is open; empty: it is still
};

// The camera at all steps of the scene's shutter, or at its opening if it is still.
inline std::vector<CameraStep> stepsOf(const RenderCamera &camera) {
    std::vector<CameraStep> steps{{.description = camera.description, .transform = camera.transform}};
    steps.insert(steps.end(), camera.later.begin(), camera.later.end());
    return steps;
}

struct NamedPlace {
    std::string name;
    ItemPlace place;
};

struct RenderSceneData {
    std::string sceneName, sceneFile;
    RenderDescription render;
    double time = 0;    // of the items, seconds
    double shutter = 0; // the longest time for which the shutter of a camera is open, seconds
    std::vector<RenderSurface> surfaces;
    std::vector<RenderObject> objects;
    std::vector<RenderLight> lights;
    std::vector<RenderCamera> cameras;
    std::unordered_set<const HostItem *> items; // of all of these
    std::vector<NamedPlace> places;             // of all of these and of the nulls
    std::vector<std::string> uvMapNames;        // of all meshes, without duplicates, in order of appearance
    Backdrop backdrop;
    Fog fog;
    Vec3 ambient; // ambient light: intensity times colour
    bool hasSingleSided = false;
    bool hasDissolved = false;                        // objects that are partly dissolved
    std::shared_ptr<const Acceleration> acceleration; // over `objects`, in the same order
    SceneWork work;                                   // done since the scene was made

    // An item by its type and index; null beyond the last one, and for bones.
    const HostItem *item(int type, std::size_t index) const {
        const auto in = [index](const auto &things) { return index < things.size() ? things[index].item : nullptr; };
        switch (type) {
        case kItemObject: return in(objects);
        case kItemLight: return in(lights);
        case kItemCamera: return in(cameras);
        default: return nullptr;
        }
    }

    // The part of `shutter` for which the shutter of a camera is open.
    double shutterPart(const CameraDescription &camera) const {
        return shutter > 0 ? camera.shutter / render.framesPerSecond / shutter : 0;
    }

    const RenderSurface &surfaceOf(std::uint32_t object, std::uint32_t triangle) const {
        const RenderObject &owner = objects[object];
        return surfaces[owner.surfaces[owner.mesh->materialNumber(triangle)]];
    }
};

} // namespace velm::host
