// Meshes from LightWave's object files.
#include "host/render/geometry/layer_vertices.h"
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
#include <fmt/format.h>
#include <set>
#include <utility>

namespace velm::host {
namespace {

constexpr std::uint32_t kNoMaterial = 0xffffffff; // yet

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

bool hasNormals(const ObjectGeometry &geometry) {
    return std::any_of(geometry.layers.begin(), geometry.layers.end(),
                       [](const ObjectLayer &layer) { return !layer.normals.empty(); });
}

class ObjectMesh {
  public:
    ObjectMesh(ObjectGeometry &geometry, const Transform &transform, std::pmr::memory_resource *memory)
        : geometry_(geometry), transform_(transform), maps_(geometry), builder_(maps_.uvNames(), false, memory),
          firstOfPoint_(memory), hasLimitNormals_(hasNormals(geometry)), limitNormals_(memory),
          materials_(geometry.tags.size() + 1, kNoMaterial) {
        maps_.addTo(builder_);
    }

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
                if (isForPictures(map) && !map.isOfMeshes() && unused.insert({map.type, map.name}).second)
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
        if (!maps_.isEmpty()) firstOfPoint_.reserve(points);
        if (hasLimitNormals_) limitNormals_.reserve(points);
    }

    std::uint16_t materialOf(const ObjectLayer &layer, std::size_t polygon) {
        const std::uint32_t tag = layer.surfaceTag(polygon);
        std::uint32_t &known = tag == kNoTag ? materials_.back() : materials_[tag];
        if (known == kNoMaterial) known = builder_.addMaterial(geometry_.surfaceOf(layer, polygon));
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
    const MeshMaps maps_;
    MeshBuilder builder_;
    std::pmr::vector<std::uint32_t> firstOfPoint_; // by vertex; empty without maps, as vertices are points then
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
