// Values that are functions of the position, which are known at every vertex of a file.
#pragma once

#include "host/bake/files/mesh_values.h"
#include "host/render/geometry/transform.h"

#include <cstdint>

namespace velm::host::test {

// The values of `of(position)` at all corners of a mesh. Positions are in the coordinates of its object. `of` gives
// `size` numbers in a container.
template <class Function>
MeshValues valuesOfPositions(const Mesh &mesh, const Transform &transform, std::uint32_t size, const Function &of) {
    MeshValues values{.size = size, .numbers = {}};
    for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle)
        for (int k = 0; k < 3; ++k)
            for (const double number : of(transform.pointToObject(mesh.corner(triangle, k))))
                values.numbers.push_back(static_cast<float>(number));
    return values;
}

inline constexpr double kRoundingError = 1e-5; // of positions that were transformed to the world and back

} // namespace velm::host::test
