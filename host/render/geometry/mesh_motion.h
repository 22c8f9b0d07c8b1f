// A mesh that moves while a shutter is open.
#pragma once

#include "host/render/geometry/mesh.h"

#include <memory>
#include <vector>

namespace velm::host {

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

    // A corner of a triangle, and the transform to world space, at a time from 0 (the first step) to 1 (the last one).
    // [render threads]
    Vec3 corner(std::uint32_t triangle, int which, double time) const;
    Transform transform(double time) const;
    // Turns a normal from the first step to the time of the transform `now`; unit length. [render threads]
    Vec3 turned(const Vec3 &normal, const Transform &now) const;

  private:
    struct Moment {
        std::size_t step; // the last one before it that has a next one
        double fraction;  // of the way to the next one
    };
    Moment momentAt(double time) const;

    std::shared_ptr<const Mesh> mesh_;
    std::vector<Transform> path_;
    std::vector<std::vector<HostPoint>> later_; // the points at the steps after the first
};

} // namespace velm::host
