#include "host/render/geometry/mesh_cache.h"

#include <algorithm>

namespace velm::host {

std::vector<MeshCache::Entry>::iterator MeshCache::find(const ShapeDescription &shape, const Transform &transform) {
    return std::ranges::find_if(
        entries_, [&](const Entry &entry) { return entry.shape == shape && entry.transform == transform; });
}

const Mesh &MeshCache::get(const ShapeDescription &shape, const Transform &transform) {
    if (const auto found = find(shape, transform); found != entries_.end()) return *found->mesh;
    auto mesh = std::make_shared<Mesh>(makeMesh(shape, transform));
    return *entries_.emplace_back(Entry{.shape = shape, .transform = transform, .mesh = std::move(mesh)}).mesh;
}

std::shared_ptr<Mesh> MeshCache::take(const ShapeDescription &shape, const Transform &transform) {
    const auto found = find(shape, transform);
    if (found == entries_.end()) return nullptr;
    std::shared_ptr<Mesh> mesh = std::move(found->mesh);
    entries_.erase(found);
    return mesh;
}

} // namespace velm::host
