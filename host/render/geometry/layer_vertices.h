// The vertices of the layers of LightWave's objects, with the values of vertex maps.
#pragma once

#include "host/object/object_geometry.h"
#include "host/render/geometry/mesh_builder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory_resource>
#include <string>
#include <utility>
#include <vector>

namespace velm::host {

// The vertex maps of the visible layers that become maps of the mesh: UV, weight and colour maps, by type and name. The
// numbers of all maps at a vertex are stored in one array, UV coordinates first.
class MeshMaps {
  public:
    struct Map {
        std::string name;
        std::uint32_t size = 0; // numbers of a value
        std::size_t first = 0;  // the index of the first of them among all numbers of a vertex
        float missing = 0;      // every number of a point without a value
    };

    explicit MeshMaps(const ObjectGeometry &geometry);

    std::vector<std::string> uvNames() const;
    // Adds the other maps to a builder that was made with these UV maps.
    void addTo(MeshBuilder &builder) const;

    bool isEmpty() const { return maps_.empty(); }
    std::size_t count() const { return maps_.size(); }
    std::size_t uvCount() const { return uvCount_; }
    const Map &operator[](std::size_t index) const { return maps_[index]; }
    // The index of a map that the mesh has.
    std::size_t indexOf(const ObjectVertexMap &map) const { return indices_.at({map.type, map.name}); }
    // All numbers of a vertex without values.
    const std::vector<float> &missing() const { return missing_; }

  private:
    void add(const ObjectGeometry &geometry, bool areUvs);

    std::vector<Map> maps_;
    std::map<std::pair<std::uint32_t, std::string>, std::size_t> indices_; // by type and name
    std::size_t uvCount_ = 0;
    std::vector<float> missing_;
};

// The vertices of one layer. A point becomes one vertex, and another one for each set of values that corners of
// polygons have there instead of the point's own.
class LayerVertices {
  public:
    // Appends to `firstOfPoint` if there are maps, and to `limitNormals` unless it is null: see Mesh. All arguments
    // have to outlive this object.
    LayerVertices(const ObjectLayer &layer, const MeshMaps &maps, const Transform &transform, MeshBuilder &builder,
                  std::pmr::vector<std::uint32_t> &firstOfPoint, std::pmr::vector<std::array<float, 3>> *limitNormals);

    // The vertices of the corners of a polygon. The polygons come in ascending order.
    void ofPolygon(std::size_t polygon, std::vector<std::uint32_t> &corners);

  private:
    struct CornerValue {
        std::uint32_t polygon, point;
        const MeshMaps::Map *map;
        const float *numbers;
    };
    // A vertex of a point with other values than the point's.
    struct Variant {
        std::uint32_t vertex, next; // an index of the point's next variant, or kNoVertex
    };

    void addPointValues(const ObjectVertexMap &map);
    void addCornerValues(const ObjectVertexMap &map);
    void takePointValues(std::uint32_t point);
    std::uint32_t add(std::uint32_t point, std::uint32_t first);
    std::array<float, 3> limitNormalOf(std::uint32_t point) const;
    std::uint32_t vertexOf(std::uint32_t point);
    std::uint32_t vertexOf(std::uint32_t point, std::size_t begin, std::size_t end);
    std::uint32_t firstOf(std::uint32_t point) const;
    bool areCurrent(const float *numbers) const;

    const ObjectLayer &layer_;
    const MeshMaps &maps_;
    const Transform &transform_;
    MeshBuilder &builder_;
    std::pmr::vector<std::uint32_t> &firstOfPoint_;
    std::pmr::vector<std::array<float, 3>> *limitNormals_; // may be null
    std::vector<std::uint32_t> vertices_;         // by point: the vertex with the point's own values, or kNoVertex
    std::vector<std::vector<float>> pointValues_; // by map, then by point; empty for a map without values of points
    std::vector<CornerValue> cornerValues_;       // by polygon
    std::size_t next_ = 0;                        // the first one of the next polygon
    std::vector<std::uint32_t> firstVariants_;    // by point
    std::vector<Variant> variants_;
    std::vector<float> variantNumbers_;         // by variant
    std::vector<float> numbers_, pointNumbers_; // of the vertex that is looked for, and of its point
    BuilderVertex vertex_;
};

} // namespace velm::host
