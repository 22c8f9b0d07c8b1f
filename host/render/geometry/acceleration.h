// The ray acceleration: Embree's scenes over the objects' meshes.
#pragma once

#include "host/render/geometry/mesh.h"

#include <embree3/rtcore.h>

#include <atomic>
#include <cstddef>
#include <vector>

namespace velm::host {

// What an object is visible to. One Embree scene serves all kinds of rays that see the same objects.
struct VisibleMesh {
    const Mesh *mesh; // its buffers are read by Embree and must neither move nor change
    bool seenByCamera, seenByRays, castsShadows;
};

class Acceleration {
  public:
    // A mesh's geometry number is its place in `meshes`. Throws MachineError.
    explicit Acceleration(const std::vector<VisibleMesh> &meshes);
    ~Acceleration();
    Acceleration(const Acceleration &) = delete;
    Acceleration &operator=(const Acceleration &) = delete;

    RTCScene cameraScene() const { return camera_; }
    RTCScene rayScene() const { return rays_; }
    RTCScene shadowScene() const { return shadows_; }
    std::size_t bytes() const { return static_cast<std::size_t>(bytes_.load()); }

  private:
    RTCScene buildScene(const std::vector<RTCGeometry> &geometries, const std::vector<bool> &seen);
    void build(const std::vector<VisibleMesh> &meshes);
    void requireNoError() const;
    void release();

    RTCDevice device_ = nullptr;
    std::vector<RTCScene> owned_;
    RTCScene camera_ = nullptr, rays_ = nullptr, shadows_ = nullptr;
    std::atomic<long> bytes_ = 0;
};

} // namespace velm::host
