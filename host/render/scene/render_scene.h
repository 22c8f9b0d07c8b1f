// A scene prepared for rendering.
#pragma once

#include "host/render/scene/scene_work.h"
#include "host/scene/format/description.h"
#include "module/host.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace velm::host {

class ItemHandles;
class MeshCache;
class Surface;
struct RenderSceneData; // host/render/scene/render_scene_data.h

// Returns the surface of a name, or null when there is none.
using SurfaceLookup = std::function<Surface *(const std::string &name)>;

// Meshes with their acceleration structure, cameras, lights and the backdrop. The caller owns the surfaces, which have
// to live as long as the scene is rendered; images come from ImageList::instance(). A RenderScene is built, changed and
// destroyed on the interface thread while nothing is rendered; rendering does not change it. Only one RenderScene is
// rendered at a time, because nodes reach the scene through services that know one.
//
// It is built in two steps, because a node's panel may list the scene's cameras and maps: nodes are created between
// them.
class RenderScene {
  public:
    // The first step: objects, lights and cameras, which the services describe from then on. Throws InputError, with a
    // source location, for a mesh that cannot be read and for invalid numbers; MachineError when memory runs out.
    // Meshes are taken from `meshes` where it has them; it may be null.
    explicit RenderScene(const SceneDescription &scene, MeshCache *meshes = nullptr);
    // The second step: surfaces, backdrop and acceleration structure, for the same description; once, and before the
    // first frame. `surfaceOf` is called during this call only. Throws InputError, with a source location, for a
    // missing surface or image, a material without a surface, and invalid numbers; MachineError when memory runs out.
    void prepare(const SceneDescription &scene, const SurfaceLookup &surfaceOf);

    // Both steps, for nodes that do not ask for the scene before it is rendered.
    RenderScene(const SceneDescription &scene, const SurfaceLookup &surfaceOf) : RenderScene(scene) {
        prepare(scene, surfaceOf);
    }

    // Changes a prepared scene to another description. Afterwards it renders the same pictures as a RenderScene that is
    // built from that description, but repeats only the work that the changes need: it makes the meshes of objects
    // whose name, shape or transform differ, but only transforms those of objects that move; it computes the normals of
    // meshes whose surfaces' smoothing angles differ; and it builds the acceleration structure if a mesh, the
    // visibility or the order of objects differs. It does not look for mesh files that changed on disk. Returns the
    // work that was repeated.
    //
    // Throws as both steps, and then leaves the scene as it was. Items that keep their names keep their handles; meshes
    // that were made or smoothed again get new ones. FrameRenderers of the scene become invalid.
    SceneWork update(const SceneDescription &scene, const SurfaceLookup &surfaceOf);

    // Moves the items to another time, in seconds; `scene` is the current description. Does the work of an update, or
    // nothing if no item has keys or the time is the same. A new scene is at the time of its first frame, and updates
    // keep the time. Throws as update, and then leaves the scene as it was.
    SceneWork setTime(const SceneDescription &scene, double time, const SurfaceLookup &surfaceOf);

    // Makes the panoramas of domes anew whose images have other pixels than before. Has to be called after each such
    // change, before anything is rendered. MachineError if memory runs out. [between frames]
    void renewPanoramas();

    ~RenderScene();
    RenderScene(const RenderScene &) = delete;
    RenderScene &operator=(const RenderScene &) = delete;

    // The contents; the reference stays valid, but updates change what it refers to.
    const RenderSceneData &data() const { return *data_; }

    // The number of updates so far.
    int updates() const { return updates_; }

    // The item of a name and type (kItemObject, kItemLight, kItemCamera), or null. Handles live as long as the scene.
    const HostItem *item(int type, const std::string &name) const;

    std::size_t triangleCount() const;
    std::size_t pointCount() const;
    std::size_t accelerationBytes() const; // memory that the acceleration structure holds now

  private:
    SceneWork rebuild(const SceneDescription &scene, double time, const SurfaceLookup &surfaceOf);

    std::unique_ptr<ItemHandles> handles_;
    std::unique_ptr<RenderSceneData> data_;
    int updates_ = 0;
};

// Looks up the UV coordinates of a sample of a RenderScene: u to the right, v up, as in the mesh's file, on the map
// `mapName`, or on the mesh's first map for null. False, with *u and *v unchanged, when the mesh has no such map or no
// value there, or the sample is not on a mesh. [render threads]
bool sampleUv(const ShadingSample &sample, const char *mapName, double *u, double *v);

} // namespace velm::host
