// A scene made ready to be rendered.
#pragma once

#include "host/scene/format/description.h"
#include "module/host.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace velm::host {

class Surface;
struct RenderSceneData; // host/render/world_data.h

// Gives the surface of a name, or null when there is none. Only called while a World is built.
using SurfaceLookup = std::function<Surface *(const std::string &name)>;

// Meshes with their ray acceleration, cameras, lights and the backdrop. Surfaces stay the caller's and have to live as
// long as the World is rendered; images come from ImageList::instance(). A World is built and destroyed on the
// interface thread and is not changed by rendering. Only one World is rendered at a time, since nodes reach the scene
// through services that know one.
//
// It is built in two steps, so that nodes find the scene in place when they are made and set: a node's panel may list
// the scene's cameras and maps.
class RenderScene {
  public:
    // Objects, lights and cameras, which services tell of from now on. Throws InputError, with its place, for a mesh
    // that cannot be read and numbers that make no sense; MachineError when memory runs out.
    explicit RenderScene(const SceneDescription &scene);
    // Surfaces, backdrop and ray acceleration, for the same scene; once, and before the first frame. Throws InputError,
    // with its place, for a surface or an image that is not there, a material that no surface is given for, and numbers
    // that make no sense; MachineError when memory runs out.
    void prepare(const SceneDescription &scene, const SurfaceLookup &surfaceOf);

    // Both steps, for nodes that do not ask for the scene before it is rendered.
    RenderScene(const SceneDescription &scene, const SurfaceLookup &surfaceOf) : RenderScene(scene) {
        prepare(scene, surfaceOf);
    }

    ~RenderScene();
    RenderScene(const RenderScene &) = delete;
    RenderScene &operator=(const RenderScene &) = delete;

    const RenderSceneData &data() const { return *data_; }

    // The item of a name and type (kItemObject, kItemLight, kItemCamera), or null. Items stay as long as the World.
    const HostItem *item(int type, const std::string &name) const;

    std::size_t triangleCount() const;
    std::size_t pointCount() const;
    std::size_t accelerationBytes() const; // memory that the ray acceleration holds now

  private:
    std::unique_ptr<RenderSceneData> data_;
};

// UV coordinates of a sample that a World's rays gave: the u-to-the-right, v-up coordinates of the mesh's file on the
// map of that name, or on the first one for null. False when the mesh has no such map or the sample stands on no mesh.
// [render threads]
bool sampleUv(const ShadingSample &sample, const char *mapName, double *u, double *v);

} // namespace velm::host
