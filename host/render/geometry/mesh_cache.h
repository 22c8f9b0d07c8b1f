// Meshes that are made before the render scene is built, since something depends on their size.
#pragma once

#include "host/render/geometry/mesh.h"

#include <memory>
#include <vector>

namespace velm::host {

// [interface thread]
class MeshCache {
  public:
    // The mesh of a shape, made with that transform at the first call. Valid until it is taken. Throws as makeMesh
    // does.
    const Mesh &get(const ShapeDescription &shape, const Transform &transform);

    // Hands a mesh over, so that the cache no longer has it; null if it has none of that shape and transform.
    std::shared_ptr<Mesh> take(const ShapeDescription &shape, const Transform &transform);

  private:
    struct Entry {
        ShapeDescription shape;
        Transform transform;
        std::shared_ptr<Mesh> mesh;
    };
    std::vector<Entry>::iterator find(const ShapeDescription &shape, const Transform &transform);

    std::vector<Entry> entries_;
};

} // namespace velm::host
