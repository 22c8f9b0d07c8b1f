// The acceleration structure for rays: Embree scenes over the objects' meshes, in one level or two.
//
// Most meshes are in world space, and all of their triangles are in one scene. A mesh that several objects share, or
// that moves from frame to frame, may be in its object's coordinates instead: then it has a scene of its own, of which
// each object is an instance with its transform. As soon as anything moves or is an instance, the other meshes may be a
// scene of their own too, if they have enough triangles, so that it is not built again for each frame. The top level
// refers to all of these. A scene without any of this has one level only.
#pragma once

#include "host/render/geometry/embree_scene.h"
#include "host/render/geometry/mesh_motion.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace velm::host {

// A mesh and the kinds of rays that see it. Kinds of rays that see the same meshes share one Embree scene.
struct VisibleMesh {
    std::shared_ptr<const Mesh> mesh; // must not change afterwards: Embree reads its buffers
    bool seenByCamera, seenByRays, castsShadows;
    std::shared_ptr<const MeshMotion> motion; // of a mesh in world space; null: it does not move while rays are cast
    int number = 0;     // equal for meshes with the same triangles, in one structure and in those that follow it
    bool moves = false; // will be at another place in the next frame
    // For a mesh in object coordinates: its transforms to world space at equal steps of time. One step: it does not
    // move while rays are cast. Empty: the mesh is in world space.
    std::vector<Transform> instance{};
};

class Acceleration {
  public:
    // Takes what it can from `former`, which may be null. Throws MachineError when memory runs out or Embree does not
    // start. Shares the ownership of the meshes. [interface thread]
    explicit Acceleration(const std::vector<VisibleMesh> &meshes, const Acceleration *former = nullptr);

    // Hits in these scenes have the mesh's index in `meshes` as their geometry id, once nameMeshOf has seen them.
    RTCScene cameraScene() const { return seen_[0].get(); }
    RTCScene rayScene() const { return seen_[1].get(); }
    RTCScene shadowScene() const { return seen_[2].get(); }
    // Memory that Embree holds now, for all structures that share scenes with this one.
    std::size_t bytes() const { return device_->bytes(); }

    // How many levels over triangles had to be built, and how many over instances.
    int builtOverTriangles() const { return builtOverTriangles_; }
    int builtOverInstances() const { return builtOverInstances_; }

  private:
    static constexpr std::size_t kKinds = 3; // of rays: from the camera, from surfaces, and for shadows
    using Scenes = std::array<EmbreeScene, kKinds>;

    // A mesh in object coordinates.
    struct Model {
        std::shared_ptr<const Mesh> mesh;
        EmbreeScene scene;
    };
    // All meshes in world space that do not move from frame to frame.
    struct Still {
        std::vector<VisibleMesh> meshes; // in the order of `indices`
        std::vector<unsigned> indices;
        Scenes scenes;
        std::array<bool, kKinds> isEmpty{};
    };
    using Parts = std::vector<std::pair<unsigned, EmbreeGeometry>>; // with their geometry ids
    using KindParts = std::array<Parts, kKinds>;

    void buildModels(const Acceleration *former);
    void buildStill(const Acceleration *former);
    void buildTop();
    KindParts trianglesOf(bool areStill) const;
    KindParts instances() const;
    Scenes buildScenes(const KindParts &parts) const;

    std::vector<VisibleMesh> meshes_;
    std::shared_ptr<const EmbreeDevice> device_;
    std::map<int, Model> models_;        // by number
    std::shared_ptr<const Still> still_; // null: its meshes are in the top level
    Scenes seen_;
    int builtOverTriangles_ = 0, builtOverInstances_ = 0;
};

// Makes the geometry id of a hit the index of its mesh. `meshes` is the number of the structure's meshes.
// [render threads]
inline void nameMeshOf(RTCHit &hit, std::uint32_t meshes) {
    if (hit.instID[0] < meshes) hit.geomID = hit.instID[0];
}

} // namespace velm::host
