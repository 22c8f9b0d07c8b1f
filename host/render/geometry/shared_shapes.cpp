#include "host/render/geometry/shared_shapes.h"

#include <algorithm>
#include <functional>
#include <string>
#include <variant>

namespace velm::host {
namespace {

std::size_t hashOf(const MeshFile &shape) { return std::hash<std::string>()(shape.file); }
std::size_t hashOf(const PlaneShape &shape) { return std::hash<double>()(shape.width); }
std::size_t hashOf(const BoxShape &shape) { return std::hash<double>()(shape.size[0]); }
std::size_t hashOf(const SphereShape &shape) { return std::hash<double>()(shape.radius); }

} // namespace

std::size_t ShapeHash::operator()(const ShapeDescription &shape) const {
    return std::visit([](const auto &one) { return hashOf(one); }, shape);
}

ShapeCounts::ShapeCounts(const std::vector<ObjectDescription> &objects) {
    for (const ObjectDescription &object : objects) ++counts_[object.shape];
}

std::size_t ShapeCounts::of(const ShapeDescription &shape) const {
    const auto found = counts_.find(shape);
    return found == counts_.end() ? 1 : found->second;
}

bool isMadeOnce(const ShapeDescription &shape, std::size_t count) {
    if (count < 2) return false;
    const auto *sphere = std::get_if<SphereShape>(&shape);
    if (!sphere) return std::holds_alternative<MeshFile>(shape);
    const auto segments = static_cast<std::size_t>(std::max(sphere->segments, 0));
    return isWorthInstances(segments * segments, count, false);
}

bool isWorthInstances(std::size_t triangles, std::size_t count, bool moves) {
    constexpr std::size_t kFewest = 100; // smaller meshes take no more memory than an instance
    return triangles >= kFewest && triangles * (moves ? count : count - 1) >= kWorthwhileTriangles;
}

} // namespace velm::host
