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
    // `path` has two transforms to world space or more, all of them invertible; with the first one, `mesh` was made.
    MeshMotion(std::shared_ptr<const Mesh> mesh, const std::vector<Transform> &path);

    const std::shared_ptr<const Mesh> &mesh() const { return mesh_; }
    std::size_t steps() const { return path_.size(); }
    // Of all points of the mesh, in its order, at a step; with the memory behind them that Embree reads.
    const HostPoint *points(std::size_t step) const;

    // At a time from 0, the first step, to 1, the last one. [render threads]
    Vec3 corner(std::uint32_t triangle, int which, double time) const;
    Transform transform(double time) const;
    // The normal at that time of what had this normal at the first step; unit length. [render threads]
    Vec3 turned(const Vec3 &normal, const Transform &now) const;

  private:
    struct Moment {
        std::size_t step; // the one before, but not the last one
        double fraction;  // of the way to the next one
    };
    Moment momentAt(double time) const;

    std::shared_ptr<const Mesh> mesh_;
    std::vector<Transform> path_;
    std::vector<std::vector<HostPoint>> later_; // the points at the steps after the first
};

} // namespace velm::host
