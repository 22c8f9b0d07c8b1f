// The bounds of whole meshes, and their centres.
#pragma once

#include "host/render/geometry/bounds.h"

namespace velm::host {

// The bounds of all polygons of a mesh. [any thread]
inline Bounds boundsOf(const Mesh &mesh) {
    Bounds all;
    for (const Bounds &bounds : boundsByMaterial(mesh)) all.include(bounds);
    return all;
}

inline Vec3 centreOf(const Bounds &bounds) {
    const auto &side = bounds.sides;
    return {(side[0][0] + side[0][1]) / 2, (side[1][0] + side[1][1]) / 2, (side[2][0] + side[2][1]) / 2};
}

} // namespace velm::host
