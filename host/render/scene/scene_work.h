// The costly part of building a render scene.
#pragma once

namespace velm::host {

struct SceneWork {
    int meshes = 0;         // read from a file or made from a shape
    int placements = 0;     // meshes in object coordinates that were transformed to world space
    int smoothings = 0;     // meshes whose normals were computed
    int accelerations = 0;  // acceleration structures over triangles that were built
    int instanceLevels = 0; // acceleration structures over instances of others

    bool operator==(const SceneWork &) const = default;
    SceneWork operator-(const SceneWork &other) const {
        return {.meshes = meshes - other.meshes,
                .placements = placements - other.placements,
                .smoothings = smoothings - other.smoothings,
                .accelerations = accelerations - other.accelerations,
                .instanceLevels = instanceLevels - other.instanceLevels};
    }
};

} // namespace velm::host
