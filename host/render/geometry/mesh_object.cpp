// Meshes from LightWave's object files.
#include "host/render/geometry/mesh_builder.h"
#include "host/render/geometry/mesh_formats.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/io/files.h"
#include "host/io/reader_process.h"
#include "host/object/object_geometry.h"
#include "host/object/subdivision.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <limits>
#include <set>
#include <unordered_map>
#include <utility>

namespace velm::host {
namespace {

using Uv = std::array<float, 2>;

constexpr std::uint32_t kNone = 0xffffffff;
constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

bool isUvMap(const ObjectVertexMap &map) { return map.type == fourCC("TXUV") && map.size == 2; }

// Whether a map may matter for a picture. The others are for editing.
bool isForPictures(const ObjectVertexMap &map) {
    switch (map.type) {
    case fourCC("TXUV"):
    case fourCC("WGHT"):
    case fourCC("RGB "):
    case fourCC("RGBA"):
    case fourCC("MORF"):
    case fourCC("SPOT"):
    case fourCC("NORM"): return !map.points.empty();
    default: return false;
    }
}

// The UV maps of the visible layers by name, with the numbers that they have in the mesh.
class UvMapNumbers {
  public:
    explicit UvMapNumbers(const ObjectGeometry &geometry) {
        for (const ObjectLayer &layer : geometry.layers) {
            if (layer.isHidden()) continue;
            for (const ObjectVertexMap &map : layer.maps)
                if (isUvMap(map) && !map.points.empty() && numbers_.emplace(map.name, names_.size()).second)
                    names_.push_back(map.name);
        }
    }
    const std::vector<std::string> &names() const { return names_; }
    std::size_t count() const { return names_.size(); }
    std::size_t operator[](const std::string &name) const { return numbers_.at(name); }

  private:
    std::vector<std::string> names_;
    std::unordered_map<std::string, std::size_t> numbers_;
};

// The vertices of one layer. A point becomes one vertex, and another one for each set of UV coordinates that corners of
// polygons have there instead of the point's own.
class LayerVertices {
  public:
    LayerVertices(const ObjectLayer &layer, const UvMapNumbers &maps, const Transform &transform, MeshBuilder &builder,
                  std::pmr::vector<std::uint32_t> &firstOfPoint, std::pmr::vector<std::array<float, 3>> *limitNormals)
        : layer_(layer), maps_(maps), transform_(transform), builder_(builder), firstOfPoint_(firstOfPoint),
          limitNormals_(limitNormals), vertices_(layer.points.size(), kNone) {
        for (const ObjectVertexMap &map : layer.maps) {
            if (!isUvMap(map) || map.points.empty()) continue;
            if (map.isOfCorners)
                addCornerValues(map);
            else
                addPointValues(map);
        }
        if (cornerValues_.empty()) return;
        std::stable_sort(cornerValues_.begin(), cornerValues_.end(),
                         [](const CornerValue &a, const CornerValue &b) { return a.polygon < b.polygon; });
        firstVariants_.assign(layer.points.size(), kNone);
    }

    // The vertices of the corners of a polygon. The polygons come in ascending order.
    void ofPolygon(std::size_t polygon, std::vector<std::uint32_t> &corners) {
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

  private:
    struct CornerValue {
        std::uint32_t polygon, point, map;
        Uv uv;
    };
    // A vertex of a point with other UV coordinates than the point's.
    struct Variant {
        std::uint32_t vertex, next; // an index of the point's next variant, or kNone
    };

    static Uv uvOf(const ObjectVertexMap &map, std::size_t value) {
        return {map.numbers[2 * value], map.numbers[2 * value + 1]};
    }

    void addPointValues(const ObjectVertexMap &map) {
        pointValues_.resize(maps_.count());
        std::vector<Uv> &values = pointValues_[maps_[map.name]];
        values.resize(layer_.points.size(), {kNoValue, kNoValue});
        for (std::size_t i = 0; i < map.points.size(); ++i) values[map.points[i]] = uvOf(map, i);
    }

    void addCornerValues(const ObjectVertexMap &map) {
        const auto number = static_cast<std::uint32_t>(maps_[map.name]);
        cornerValues_.reserve(cornerValues_.size() + map.points.size());
        for (std::size_t i = 0; i < map.points.size(); ++i)
            cornerValues_.push_back(
                {.polygon = map.polygons[i], .point = map.points[i], .map = number, .uv = uvOf(map, i)});
    }

    void takePointUvs(std::uint32_t point) {
        vertex_.uvs.assign(maps_.count(), {kNoValue, kNoValue});
        for (std::size_t map = 0; map < pointValues_.size(); ++map)
            if (!pointValues_[map].empty()) vertex_.uvs[map] = pointValues_[map][point];
    }

    // Adds the vertex of a point with the UV coordinates in vertex_.
    std::uint32_t add(std::uint32_t point, std::uint32_t first) {
        const std::array<float, 3> &p = layer_.points[point];
        vertex_.position = transform_.pointToWorld({p[0], p[1], p[2]});
        const std::uint32_t added = builder_.addSeparateVertex(vertex_);
        if (maps_.count() > 0) firstOfPoint_.push_back(first == kNone ? added : first);
        if (limitNormals_) limitNormals_->push_back(limitNormalOf(point));
        return added;
    }

    std::array<float, 3> limitNormalOf(std::uint32_t point) const {
        if (layer_.normals.empty()) return {};
        const std::array<float, 3> &n = layer_.normals[point];
        const Vec3 normal = normalised(transform_.normalToWorld({n[0], n[1], n[2]}), {0, 0, 0});
        return {static_cast<float>(normal.x), static_cast<float>(normal.y), static_cast<float>(normal.z)};
    }

    std::uint32_t vertexOf(std::uint32_t point) {
        if (vertices_[point] != kNone) return vertices_[point];
        takePointUvs(point);
        return vertices_[point] = add(point, firstOf(point));
    }

    // The first vertex that was made of a point, or kNone.
    std::uint32_t firstOf(std::uint32_t point) const {
        if (vertices_[point] != kNone)
            return firstOfPoint_.empty() ? vertices_[point] : firstOfPoint_[vertices_[point]];
        if (firstVariants_.empty() || firstVariants_[point] == kNone) return kNone;
        return firstOfPoint_[variants_[firstVariants_[point]].vertex];
    }

    // The same with the values of corners from `begin` to `end`, of which those at the point count.
    std::uint32_t vertexOf(std::uint32_t point, std::size_t begin, std::size_t end) {
        takePointUvs(point);
        pointUvs_ = vertex_.uvs;
        for (std::size_t i = begin; i < end; ++i)
            if (cornerValues_[i].point == point) vertex_.uvs[cornerValues_[i].map] = cornerValues_[i].uv;
        if (same(vertex_.uvs, pointUvs_.data())) return vertexOf(point);
        for (std::uint32_t variant = firstVariants_[point]; variant != kNone; variant = variants_[variant].next)
            if (same(vertex_.uvs, variantUvs_.data() + variant * maps_.count())) return variants_[variant].vertex;
        const std::uint32_t added = add(point, firstOf(point));
        variants_.push_back({.vertex = added, .next = firstVariants_[point]});
        variantUvs_.insert(variantUvs_.end(), vertex_.uvs.begin(), vertex_.uvs.end());
        firstVariants_[point] = static_cast<std::uint32_t>(variants_.size() - 1);
        return added;
    }

    // Compares bits: no value, a NaN, equals no value.
    static bool same(const std::vector<Uv> &uvs, const Uv *others) {
        using Bits = std::array<std::uint32_t, 2>;
        return std::equal(uvs.begin(), uvs.end(), others,
                          [](const Uv &a, const Uv &b) { return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b); });
    }

    const ObjectLayer &layer_;
    const UvMapNumbers &maps_;
    const Transform &transform_;
    MeshBuilder &builder_;
    std::pmr::vector<std::uint32_t> &firstOfPoint_;
    std::pmr::vector<std::array<float, 3>> *limitNormals_; // may be null
    std::vector<std::uint32_t> vertices_;      // by point: the vertex with the point's own UV coordinates, or kNone
    std::vector<std::vector<Uv>> pointValues_; // by map, then by point; empty for a map without values of points
    std::vector<CornerValue> cornerValues_;    // by polygon
    std::size_t next_ = 0;                     // the first one of the polygons to come
    std::vector<std::uint32_t> firstVariants_; // by point
    std::vector<Variant> variants_;
    std::vector<Uv> variantUvs_; // by variant, then by map
    BuilderVertex vertex_;
    std::vector<Uv> pointUvs_;
};

bool hasNormals(const ObjectGeometry &geometry) {
    return std::any_of(geometry.layers.begin(), geometry.layers.end(),
                       [](const ObjectLayer &layer) { return !layer.normals.empty(); });
}

class ObjectMesh {
  public:
    ObjectMesh(ObjectGeometry &geometry, const Transform &transform, std::pmr::memory_resource *memory)
        : geometry_(geometry), transform_(transform), maps_(geometry), builder_(maps_.names(), false, memory),
          firstOfPoint_(memory), hasLimitNormals_(hasNormals(geometry)), limitNormals_(memory),
          materials_(geometry.tags.size() + 1, kNone) {}

    Mesh build(const std::string &file) {
        noteLosses();
        reserve();
        for (ObjectLayer &layer : geometry_.layers) {
            if (!layer.isHidden()) addLayer(layer);
            layer = {}; // frees its memory
        }
        if (builder_.triangleCount() == 0)
            throw InputError({.file = file}, geometry_.losses.count(Loss::hiddenLayer) > 0
                                                 ? "the mesh has no polygons but in hidden layers"
                                                 : "the mesh has no polygons");
        Mesh mesh = builder_.finish();
        mesh.firstOfPoint = std::move(firstOfPoint_);
        mesh.limitNormals = std::move(limitNormals_);
        addWarnings(geometry_.losses, mesh);
        return mesh;
    }

  private:
    void noteLosses() {
        std::set<std::pair<std::uint32_t, std::string>> unused; // maps by type and name
        for (const ObjectLayer &layer : geometry_.layers) {
            if (layer.isHidden()) {
                if (!layer.polygons.empty()) geometry_.losses.addAt(Loss::hiddenLayer, [&] { return placeOf(layer); });
                continue;
            }
            notePolygons(layer);
            for (const ObjectVertexMap &map : layer.maps)
                if (isForPictures(map) && !isUvMap(map) && unused.insert({map.type, map.name}).second)
                    geometry_.losses.addAt(Loss::unusedMap, [&] {
                        return fmt::format("{} {}, {}", blockName(map.type), inQuotes(map.name), placeOf(layer));
                    });
        }
    }

    void notePolygons(const ObjectLayer &layer) {
        Losses &losses = geometry_.losses;
        for (const ObjectPolygons &group : layer.polygons) {
            if (group.count == 0) continue;
            const bool isKnown = group.areDrawn() || group.areCage();
            if (!isKnown)
                losses.add(Loss::undrawnPolygon,
                           fmt::format("{}, {}", blockName(group.type), placeOf(layer, group.first)), group.count);
            for (std::size_t i = group.first; isKnown && i < group.first + group.count; ++i)
                if (layer.ends[i] - layer.begin(i) < 3)
                    losses.addAt(Loss::smallPolygon, [&] { return placeOf(layer, i); });
        }
        for (std::size_t i = 0; i < layer.smoothingGroups.size(); ++i)
            if (layer.smoothingGroups[i] != kNoTag)
                losses.addAt(Loss::smoothingGroup, [&] { return placeOf(layer, i); });
    }

    void reserve() {
        std::size_t points = 0, triangles = 0;
        for (const ObjectLayer &layer : geometry_.layers) {
            if (layer.isHidden()) continue;
            points += layer.points.size();
            forEachDrawnPolygon(layer,
                                [&](std::size_t i) { triangles += layer.ends[i] - layer.begin(i) - std::size_t{2}; });
        }
        builder_.reserve(points, triangles);
        if (maps_.count() > 0) firstOfPoint_.reserve(points);
        if (hasLimitNormals_) limitNormals_.reserve(points);
    }

    std::uint16_t materialOf(const ObjectLayer &layer, std::size_t polygon) {
        const std::uint32_t tag = layer.surfaceTag(polygon);
        std::uint32_t &known = tag == kNoTag ? materials_.back() : materials_[tag];
        if (known == kNone) known = builder_.addMaterial(geometry_.surfaceOf(layer, polygon));
        return static_cast<std::uint16_t>(known);
    }

    void addLayer(const ObjectLayer &layer) {
        LayerVertices vertices(layer, maps_, transform_, builder_, firstOfPoint_,
                               hasLimitNormals_ ? &limitNormals_ : nullptr);
        const bool turn = transform_.mirrors(); // which reverses every polygon
        std::vector<std::uint32_t> corners;
        forEachDrawnPolygon(layer, [&](std::size_t polygon) {
            vertices.ofPolygon(polygon, corners);
            if (turn) std::reverse(corners.begin() + 1, corners.end());
            builder_.addPolygon(corners, materialOf(layer, polygon));
        });
    }

    ObjectGeometry &geometry_;
    const Transform &transform_;
    const UvMapNumbers maps_;
    MeshBuilder builder_;
    std::pmr::vector<std::uint32_t> firstOfPoint_; // by vertex; empty without UV maps, as vertices are points then
    const bool hasLimitNormals_;
    std::pmr::vector<std::array<float, 3>> limitNormals_;
    std::vector<std::uint32_t> materials_; // by tag; the last one is that of polygons without a tag
};

// Leaves only the layer of that number, which becomes visible.
void keepLayer(int number, const std::string &file, ObjectGeometry &geometry) {
    std::erase_if(geometry.layers,
                  [number](const ObjectLayer &one) { return one.number != static_cast<std::uint32_t>(number); });
    if (geometry.layers.empty()) throw InputError({.file = file}, fmt::format("the object has no layer {}", number));
    for (ObjectLayer &one : geometry.layers) one.flags &= ~ObjectLayer::kHidden;
}

} // namespace

Mesh readObjectMesh(const std::string &file, const MeshFormat &, const Transform &transform,
                    std::pmr::memory_resource *memory) {
    return readObjectLayers(file, transform, std::nullopt, kDefaultSubdivision, memory);
}

Mesh readObjectLayers(const std::string &file, const Transform &transform, std::optional<int> layer, int subdivision,
                      std::pmr::memory_resource *memory) {
    ObjectGeometry geometry = readObject(readFile(file), file);
    if (layer) keepLayer(*layer, file, geometry);
    subdivide(geometry, {.level = subdivision, .mostBytes = readLimitInBytes()}, file);
    return ObjectMesh(geometry, transform, memory).build(file);
}

std::vector<std::string> filesOfObjectMesh(const std::string &file, const MeshFormat &) {
    readObject(readFile(file), file);
    return {file};
}

} // namespace velm::host
