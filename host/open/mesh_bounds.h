// The bounds of whole meshes, and their centres.
#pragma once

#include "host/render/geometry/bounds.h"

namespace velm::host {

inline Bounds unionOf(const std::vector<Bounds> &parts) {
    Bounds all;
    for (const Bounds &bounds : parts) all.include(bounds);
    return all;
}

// The bounds of all polygons of a mesh, and those in world space of a mesh in object coordinates. [any thread]
inline Bounds boundsOf(const Mesh &mesh) { return unionOf(boundsByMaterial(mesh)); }
inline Bounds boundsOf(const Mesh &mesh, const Transform &transform) {
    return unionOf(boundsByMaterial(mesh, transform));
}

inline Vec3 centreOf(const Bounds &bounds) {
    const auto &side = bounds.sides;
    return {(side[0][0] + side[0][1]) / 2, (side[1][0] + side[1][1]) / 2, (side[2][0] + side[2][1]) / 2};
}

} // namespace velm::host
