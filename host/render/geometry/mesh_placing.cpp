// Transforms meshes from object coordinates to world space.
#include "host/render/geometry/mesh.h"

#include <cassert>
#include <utility>

namespace velm::host {

Mesh placedMesh(const Mesh &mesh, const Transform &transform) {
    assert(mesh.smoothingAngles.empty() && "smooth the placed mesh instead");
    Mesh placed(mesh);
    placed.padPoints();
    for (HostPoint &point : placed.points) {
        float *p = point.position;
        const Vec3 position = transform.pointToWorld({p[0], p[1], p[2]});
        p[0] = static_cast<float>(position.x);
        p[1] = static_cast<float>(position.y);
        p[2] = static_cast<float>(position.z);
    }
    for (auto *normals : {&placed.normals, &placed.limitNormals})
        for (std::array<float, 3> &normal : *normals) {
            const Vec3 turned = normalised(transform.normalToWorld({normal[0], normal[1], normal[2]}), {0, 0, 0});
            normal = {static_cast<float>(turned.x), static_cast<float>(turned.y), static_cast<float>(turned.z)};
        }
    if (transform.mirrors())
        for (HostPolygon &triangle : placed.triangles) std::swap(triangle.corners[1], triangle.corners[2]);
    return placed;
}

} // namespace velm::host
