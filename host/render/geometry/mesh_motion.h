// A mesh that moves while a shutter is open.
#pragma once

#include "host/render/geometry/mesh.h"

#include <memory>
#include <vector>

namespace velm::host {

// The transform of `path`, which has two or more at equal steps of time, at a time from 0 (the first step) to 1 (the
// last one); its matrix and its position are interpolated between the nearest two. [render threads]
Transform transformAt(const std::vector<Transform> &path, double time);

// The points of a mesh at equal steps of time. In between they move along straight lines, in Embree and here, so that
// the transform between two steps is the interpolated one.
class MeshMotion {
  public:
    // `path` has two or more transforms to world space, all invertible. `mesh` was made with the first one.
    MeshMotion(std::shared_ptr<const Mesh> mesh, const std::vector<Transform> &path);

    const std::shared_ptr<const Mesh> &mesh() const { return mesh_; }
    std::size_t steps() const { return path_.size(); }
    // All points of the mesh at a step, in the mesh's order, followed by the padding that Embree reads.
    const HostPoint *points(std::size_t step) const;

    // A corner of a triangle at a time as for transformAt. [render threads]
    Vec3 corner(std::uint32_t triangle, int which, double time) const;
    // Turns a normal from the first step to the time of the transform `now`; unit length. [render threads]
    Vec3 turned(const Vec3 &normal, const Transform &now) const;

  private:
    std::shared_ptr<const Mesh> mesh_;
    std::vector<Transform> path_;
    std::vector<std::vector<HostPoint>> later_; // the points at the steps after the first
};

} // namespace velm::host
