#include "host/render/geometry/bounds.h"

#include <algorithm>

namespace velm::host {

void Bounds::include(const Vec3 &point) {
    const double values[3] = {point.x, point.y, point.z};
    for (int axis = 0; axis < 3; ++axis) {
        sides[axis][0] = std::min(sides[axis][0], values[axis]);
        sides[axis][1] = std::max(sides[axis][1], values[axis]);
    }
}

void Bounds::include(const Bounds &other) {
    for (int axis = 0; axis < 3; ++axis) {
        sides[axis][0] = std::min(sides[axis][0], other.sides[axis][0]);
        sides[axis][1] = std::max(sides[axis][1], other.sides[axis][1]);
    }
}

std::vector<Bounds> boundsByMaterial(const Mesh &mesh) {
    std::vector<Bounds> bounds(mesh.materials.size());
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
        Bounds &own = bounds[mesh.materialNumber(triangle)];
        for (int k = 0; k < 3; ++k) own.include(mesh.corner(triangle, k));
    }
    return bounds;
}

} // namespace velm::host
