// The costly part of building a render scene.
#pragma once

namespace velm::host {

struct SceneWork {
    int meshes = 0;        // read from a file or made from a shape
    int placements = 0;    // meshes of moving objects that were transformed to world space
    int smoothings = 0;    // meshes whose normals were computed
    int accelerations = 0; // acceleration structures that were built

    bool operator==(const SceneWork &) const = default;
    SceneWork operator-(const SceneWork &other) const {
        return {.meshes = meshes - other.meshes,
                .placements = placements - other.placements,
                .smoothings = smoothings - other.smoothings,
                .accelerations = accelerations - other.accelerations};
    }
};

} // namespace velm::host
