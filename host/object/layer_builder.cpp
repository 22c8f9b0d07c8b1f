#include "host/object/layer_builder.h"

#include <utility>

namespace velm::host {

std::array<float, 3> readVector(ChunkCursor &cursor) {
    const float x = cursor.real(), y = cursor.real(), z = cursor.real();
    return {x, y, z};
}

ObjectLayer &LayerBuilder::layer() {
    if (geometry_.layers.empty()) geometry_.layers.emplace_back();
    return geometry_.layers.back();
}

void LayerBuilder::startLayer(ObjectLayer layer) {
    geometry_.layers.push_back(std::move(layer));
    firstPoint_ = pointCount_ = 0;
}

void LayerBuilder::readPoints(ChunkCursor cursor) {
    constexpr std::size_t kPoint = 12; // bytes
    std::vector<std::array<float, 3>> &points = layer().points;
    if (cursor.left() % kPoint != 0) cursor.fail(cursor.at(), "its size is not a multiple of the 12 bytes of a point");
    const std::size_t count = cursor.left() / kPoint;
    makeRoom(points, count);
    firstPoint_ = static_cast<std::uint32_t>(points.size());
    pointCount_ = static_cast<std::uint32_t>(count);
    while (!cursor.isAtEnd()) points.push_back(readVector(cursor));
}

void LayerBuilder::startPolygons(std::uint32_t type, std::size_t polygonCount, std::size_t cornerCount) {
    ObjectLayer &target = layer();
    target.polygons.push_back({.type = type, .first = target.ends.size(), .count = 0});
    makeRoom(target.ends, polygonCount);
    makeRoom(target.corners, cornerCount);
}

void LayerBuilder::endPolygon() {
    ObjectLayer &target = layer();
    target.ends.push_back(static_cast<std::uint32_t>(target.corners.size()));
    ++target.polygons.back().count;
}

std::optional<std::size_t> LayerBuilder::polygon(std::uint32_t index) const {
    if (geometry_.layers.empty() || geometry_.layers.back().polygons.empty()) return std::nullopt;
    const ObjectPolygons &last = geometry_.layers.back().polygons.back();
    if (index >= last.count) return std::nullopt;
    return last.first + index;
}

} // namespace velm::host
