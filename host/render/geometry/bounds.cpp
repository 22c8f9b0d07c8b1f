#include "host/render/geometry/bounds.h"

#include "host/render/geometry/parallel.h"

#include <algorithm>
#include <map>

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

namespace {

// `place` gives the position of a corner in the space of the bounds.
template <class Place>
std::vector<Bounds> boundsOfPlaced(const Mesh &mesh, const Place &place) {
    const std::size_t count = mesh.triangles.size();
    // By range, the bounds of the materials that its triangles have. Bounds of all materials for each range could take
    // more memory than the mesh.
    std::vector<std::map<std::uint16_t, Bounds>> ofRanges(rangeCount(count));
    forRanges(count, [&](std::size_t range, std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const auto triangle = static_cast<std::uint32_t>(i);
            Bounds &own = ofRanges[range][mesh.materialNumber(triangle)];
            for (int k = 0; k < 3; ++k) own.include(place(mesh.corner(triangle, k)));
        }
    });
    std::vector<Bounds> bounds(mesh.materials.size());
    for (const auto &ofRange : ofRanges)
        for (const auto &[material, own] : ofRange) bounds[material].include(own);
    return bounds;
}

} // namespace

std::vector<Bounds> boundsByMaterial(const Mesh &mesh) {
    return boundsOfPlaced(mesh, [](const Vec3 &corner) { return corner; });
}

std::vector<Bounds> boundsByMaterial(const Mesh &mesh, const Transform &transform) {
    // Rounded like the points of placedMesh.
    const auto round = [](double value) { return static_cast<double>(static_cast<float>(value)); };
    return boundsOfPlaced(mesh, [&](const Vec3 &corner) {
        const Vec3 placed = transform.pointToWorld(corner);
        return Vec3{round(placed.x), round(placed.y), round(placed.z)};
    });
}

} // namespace velm::host
