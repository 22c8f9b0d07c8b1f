#include "host/render/geometry/bounds.h"

#include "host/render/geometry/parallel.h"

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
    const std::size_t count = mesh.triangles.size(), materials = mesh.materials.size();
    std::vector<Bounds> ofRanges(rangeCount(count) * materials); // by range, then by material
    forRanges(count, [&](std::size_t range, std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const auto triangle = static_cast<std::uint32_t>(i);
            Bounds &own = ofRanges[range * materials + mesh.materialNumber(triangle)];
            for (int k = 0; k < 3; ++k) own.include(mesh.corner(triangle, k));
        }
    });
    std::vector<Bounds> bounds(materials);
    for (std::size_t i = 0; i < ofRanges.size(); ++i) bounds[i % materials].include(ofRanges[i]);
    return bounds;
}

} // namespace velm::host
