// Axis-aligned bounds.
#pragma once

#include "host/render/geometry/mesh.h"

#include <vector>

namespace velm::host {

// The low and high ends of x, y and z, in metres; infinite the wrong way round while nothing is included.
struct Bounds {
    double sides[3][2] = {{INFINITY, -INFINITY}, {INFINITY, -INFINITY}, {INFINITY, -INFINITY}};

    void include(const Vec3 &point);
    void include(const Bounds &other);
};

// The bounds of the polygons of each of the mesh's materials. [any thread]
std::vector<Bounds> boundsByMaterial(const Mesh &mesh);
// The same in world space, for a mesh in object coordinates. [any thread]
std::vector<Bounds> boundsByMaterial(const Mesh &mesh, const Transform &transform);

} // namespace velm::host
