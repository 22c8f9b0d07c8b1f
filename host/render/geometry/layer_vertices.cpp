#include "host/render/geometry/layer_vertices.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace velm::host {
namespace {

constexpr std::uint32_t kNoVertex = 0xffffffff; // no vertex, or no variant

bool isUvMap(const ObjectVertexMap &map) { return map.type == fourCC("TXUV") && map.size == 2; }

// The numbers of points without a value: no UV coordinates (NaN), the weight 0, or white.
float missingValueOf(const ObjectVertexMap &map) {
    if (isUvMap(map)) return std::numeric_limits<float>::quiet_NaN();
    return map.type == fourCC("WGHT") ? 0.0F : 1.0F;
}

} // namespace

MeshMaps::MeshMaps(const ObjectGeometry &geometry) {
    add(geometry, true);
    uvCount_ = maps_.size();
    add(geometry, false);
}

void MeshMaps::add(const ObjectGeometry &geometry, bool areUvs) {
    for (const ObjectLayer &layer : geometry.layers) {
        if (layer.isHidden()) continue;
        for (const ObjectVertexMap &map : layer.maps) {
            if (!map.isOfMeshes() || isUvMap(map) != areUvs || map.points.empty()) continue;
            if (!indices_.try_emplace({map.type, map.name}, maps_.size()).second) continue;
            const float missing = missingValueOf(map);
            maps_.push_back({.name = map.name, .size = map.size, .first = missing_.size(), .missing = missing});
            missing_.resize(missing_.size() + map.size, missing);
        }
    }
}

std::vector<std::string> MeshMaps::uvNames() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < uvCount_; ++i) names.push_back(maps_[i].name);
    return names;
}

void MeshMaps::addTo(MeshBuilder &builder) const {
    for (std::size_t i = uvCount_; i < maps_.size(); ++i) builder.addVertexMap(maps_[i].name, maps_[i].size);
}

LayerVertices::LayerVertices(const ObjectLayer &layer, const MeshMaps &maps, const Transform &transform,
                             MeshBuilder &builder, std::pmr::vector<std::uint32_t> &firstOfPoint,
                             std::pmr::vector<std::array<float, 3>> *limitNormals)
    : layer_(layer), maps_(maps), transform_(transform), builder_(builder), firstOfPoint_(firstOfPoint),
      limitNormals_(limitNormals), vertices_(layer.points.size(), kNoVertex) {
    for (const ObjectVertexMap &map : layer.maps) {
        if (!map.isOfMeshes() || map.points.empty()) continue;
        if (map.isOfCorners)
            addCornerValues(map);
        else
            addPointValues(map);
    }
    if (cornerValues_.empty()) return;
    std::stable_sort(cornerValues_.begin(), cornerValues_.end(),
                     [](const CornerValue &a, const CornerValue &b) { return a.polygon < b.polygon; });
    firstVariants_.assign(layer.points.size(), kNoVertex);
}

void LayerVertices::ofPolygon(std::size_t polygon, std::vector<std::uint32_t> &corners) {
    corners.clear();
    const std::size_t begin = layer_.begin(polygon), end = layer_.ends[polygon];
    while (next_ < cornerValues_.size() && cornerValues_[next_].polygon < polygon) ++next_;
    const std::size_t first = next_;
    while (next_ < cornerValues_.size() && cornerValues_[next_].polygon == polygon) ++next_;
    for (std::size_t i = begin; i < end; ++i) {
        const std::uint32_t point = layer_.corners[i];
        corners.push_back(first == next_ ? vertexOf(point) : vertexOf(point, first, next_));
    }
}

void LayerVertices::addPointValues(const ObjectVertexMap &map) {
    pointValues_.resize(maps_.count());
    const std::size_t index = maps_.indexOf(map);
    std::vector<float> &values = pointValues_[index];
    values.resize(layer_.points.size() * map.size, maps_[index].missing);
    for (std::size_t i = 0; i < map.points.size(); ++i)
        std::copy_n(map.numbers.data() + i * map.size, map.size, values.data() + std::size_t{map.points[i]} * map.size);
}

void LayerVertices::addCornerValues(const ObjectVertexMap &map) {
    const MeshMaps::Map *ofMesh = &maps_[maps_.indexOf(map)];
    cornerValues_.reserve(cornerValues_.size() + map.points.size());
    for (std::size_t i = 0; i < map.points.size(); ++i)
        cornerValues_.push_back({.polygon = map.polygons[i],
                                 .point = map.points[i],
                                 .map = ofMesh,
                                 .numbers = map.numbers.data() + i * map.size});
}

void LayerVertices::takePointValues(std::uint32_t point) {
    numbers_ = maps_.missing();
    for (std::size_t map = 0; map < pointValues_.size(); ++map) {
        const std::size_t size = maps_[map].size;
        if (!pointValues_[map].empty())
            std::copy_n(pointValues_[map].data() + point * size, size, numbers_.data() + maps_[map].first);
    }
}

// Adds the vertex of a point with the values in numbers_.
std::uint32_t LayerVertices::add(std::uint32_t point, std::uint32_t first) {
    const std::array<float, 3> &p = layer_.points[point];
    vertex_.position = transform_.pointToWorld({p[0], p[1], p[2]});
    vertex_.uvs.resize(maps_.uvCount());
    for (std::size_t i = 0; i < maps_.uvCount(); ++i) vertex_.uvs[i] = {numbers_[2 * i], numbers_[2 * i + 1]};
    vertex_.values.assign(numbers_.begin() + static_cast<std::ptrdiff_t>(2 * maps_.uvCount()), numbers_.end());
    const std::uint32_t added = builder_.addSeparateVertex(vertex_);
    if (!maps_.isEmpty()) firstOfPoint_.push_back(first == kNoVertex ? added : first);
    if (limitNormals_) limitNormals_->push_back(limitNormalOf(point));
    return added;
}

std::array<float, 3> LayerVertices::limitNormalOf(std::uint32_t point) const {
    if (layer_.normals.empty()) return {};
    const std::array<float, 3> &n = layer_.normals[point];
    const Vec3 normal = normalised(transform_.normalToWorld({n[0], n[1], n[2]}), {0, 0, 0});
    return {static_cast<float>(normal.x), static_cast<float>(normal.y), static_cast<float>(normal.z)};
}

std::uint32_t LayerVertices::vertexOf(std::uint32_t point) {
    if (vertices_[point] != kNoVertex) return vertices_[point];
    takePointValues(point);
    return vertices_[point] = add(point, firstOf(point));
}

// The first vertex that was made of a point, or kNoVertex.
std::uint32_t LayerVertices::firstOf(std::uint32_t point) const {
    if (vertices_[point] != kNoVertex)
        return firstOfPoint_.empty() ? vertices_[point] : firstOfPoint_[vertices_[point]];
    if (firstVariants_.empty() || firstVariants_[point] == kNoVertex) return kNoVertex;
    return firstOfPoint_[variants_[firstVariants_[point]].vertex];
}

// The same with the values of corners from `begin` to `end`, of which those at the point count.
std::uint32_t LayerVertices::vertexOf(std::uint32_t point, std::size_t begin, std::size_t end) {
    takePointValues(point);
    pointNumbers_ = numbers_;
    for (std::size_t i = begin; i < end; ++i) {
        const CornerValue &value = cornerValues_[i];
        if (value.point == point) std::copy_n(value.numbers, value.map->size, numbers_.data() + value.map->first);
    }
    if (areCurrent(pointNumbers_.data())) return vertexOf(point);
    for (std::uint32_t variant = firstVariants_[point]; variant != kNoVertex; variant = variants_[variant].next)
        if (areCurrent(variantNumbers_.data() + variant * numbers_.size())) return variants_[variant].vertex;
    const std::uint32_t added = add(point, firstOf(point));
    variants_.push_back({.vertex = added, .next = firstVariants_[point]});
    variantNumbers_.insert(variantNumbers_.end(), numbers_.begin(), numbers_.end());
    firstVariants_[point] = static_cast<std::uint32_t>(variants_.size() - 1);
    return added;
}

// Compares bits with those of numbers_: no value, a NaN, equals no value.
bool LayerVertices::areCurrent(const float *numbers) const {
    return std::memcmp(numbers_.data(), numbers, numbers_.size() * sizeof(float)) == 0;
}

} // namespace velm::host
