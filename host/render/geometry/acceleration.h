// The acceleration structure for rays: Embree scenes over the objects' meshes.
#pragma once

#include "host/render/geometry/mesh_motion.h"

#include <embree3/rtcore.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace velm::host {

// A mesh and the kinds of rays that see it. Kinds of rays that see the same meshes share one Embree scene.
struct VisibleMesh {
    std::shared_ptr<const Mesh> mesh; // must not change afterwards: Embree reads its buffers
    bool seenByCamera, seenByRays, castsShadows;
    std::shared_ptr<const MeshMotion> motion; // of the mesh; null: it does not move. Rays see it at their own times
};

class Acceleration {
  public:
    // The geometry id of a mesh is its index in `meshes`. Throws MachineError when memory runs out or Embree does not
    // start. Shares the ownership of the meshes. [interface thread]
    explicit Acceleration(const std::vector<VisibleMesh> &meshes);
    ~Acceleration();
    Acceleration(const Acceleration &) = delete;
    Acceleration &operator=(const Acceleration &) = delete;

    RTCScene cameraScene() const { return camera_; }
    RTCScene rayScene() const { return rays_; }
    RTCScene shadowScene() const { return shadows_; }
    // Memory that Embree holds now.
    std::size_t bytes() const { return static_cast<std::size_t>(bytes_.load()); }

  private:
    RTCScene buildScene(const std::vector<RTCGeometry> &geometries, const std::vector<bool> &seen);
    void build(const std::vector<VisibleMesh> &meshes);
    void requireNoError() const;
    void release();

    std::vector<VisibleMesh> meshes_;
    RTCDevice device_ = nullptr;
    std::vector<RTCScene> owned_;
    RTCScene camera_ = nullptr, rays_ = nullptr, shadows_ = nullptr;
    std::atomic<long> bytes_ = 0;
};

} // namespace velm::host
