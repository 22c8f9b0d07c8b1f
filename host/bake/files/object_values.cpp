#include "host/bake/files/object_values.h"

#include "host/object/cage.h"
#include "host/object/subdivision.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

namespace velm::host {
namespace {

// Fills the values of one layer.
class LayerFill {
  public:
    // `original` is the layer of the file. `subdivided` is the same with the polygons of its subdivision surfaces.
    LayerFill(const ObjectLayer &original, const ObjectLayer &subdivided, const PolygonValues &values,
              const Transform &transform)
        : original_(original), subdivided_(subdivided), values_(values), transform_(transform) {
        result.numbers.assign(original.corners.size() * values.size(), std::numeric_limits<float>::quiet_NaN());
        result.weights.resize(original.corners.size());
    }

    // Takes the values of a polygon of the subdivided layer, which has the number `drawn` in the mesh.
    void take(std::size_t polygon, std::size_t drawn) {
        const bool isSurface = polygon >= original_.ends.size();
        for (std::size_t corner = subdivided_.begin(polygon); corner < subdivided_.ends[polygon]; ++corner) {
            const std::uint32_t point = subdivided_.corners[corner];
            const auto &p = subdivided_.points[point];
            const ValueSum value = values_.at(drawn, rounded(transform_.pointToWorld({p[0], p[1], p[2]})));
            if (!(value.weight() > 0)) continue;
            if (isSurface)
                surface_.try_emplace({point, subdivided_.surfaceTag(polygon)}, values_.size())
                    .first->second.add(value.mean(), value.weight());
            else
                set(corner, value, 1);
        }
    }

    // Gives the corners of the cage the values that were taken from its surface, by point and by surface.
    void takeToCage() {
        if (surface_.empty()) return;
        Losses losses; // which were noted when the mesh was read
        const Cage cage = cageOf(original_, losses);
        std::map<std::uint32_t, std::uint32_t> moved; // by point of the cage: the point of the surface
        for (std::size_t i = 0; i < cage.points.size(); ++i)
            moved[cage.points[i]] = static_cast<std::uint32_t>(original_.points.size() + i);
        forEachCageCorner(cage, moved, [&](std::size_t, const Key &key) { ++shares_[key]; });
        forEachCageCorner(cage, moved, [&](std::size_t corner, const Key &key) {
            if (const auto found = surface_.find(key); found != surface_.end())
                set(corner, found->second, shares_[key]);
        });
    }

    LayerCornerValues result;
    bool hasValues = false; // whether a corner has one

  private:
    using Key = std::pair<std::uint32_t, std::uint32_t>; // a point of the subdivided layer, and a tag of a surface

    static Vec3 rounded(const Vec3 &v) {
        return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
    }

    template <class Use>
    void forEachCageCorner(const Cage &cage, const std::map<std::uint32_t, std::uint32_t> &moved, const Use &use) {
        for (const std::uint32_t polygon : cage.polygons)
            for (std::size_t corner = original_.begin(polygon); corner < original_.ends[polygon]; ++corner)
                use(corner, Key(moved.at(original_.corners[corner]), original_.surfaceTag(polygon)));
    }

    // `sharers` is the number of corners that share the weight.
    void set(std::size_t corner, const ValueSum &value, std::size_t sharers) {
        std::ranges::copy(value.mean(), result.numbers.begin() + static_cast<std::ptrdiff_t>(corner * values_.size()));
        result.weights[corner] = value.weight() / static_cast<double>(sharers);
        hasValues = true;
    }

    const ObjectLayer &original_, &subdivided_;
    const PolygonValues &values_;
    const Transform &transform_;
    std::map<Key, ValueSum> surface_;
    std::map<Key, std::size_t> shares_;
};

} // namespace

std::vector<LayerCornerValues> objectValues(const Mesh &mesh, const MeshValues &values, const ObjectGeometry &geometry,
                                            const ObjectMeshSource &source) {
    const PolygonValues polygons(mesh, values);
    ObjectGeometry subdivided = geometry;
    if (source.layer)
        for (ObjectLayer &layer : subdivided.layers)
            layer.flags = layer.number == static_cast<std::uint32_t>(*source.layer) ? 0 : ObjectLayer::kHidden;
    subdivide(subdivided, {.level = source.subdivision, .mostBytes = source.mostBytes}, source.file);
    std::vector<LayerCornerValues> layers;
    std::size_t drawn = 0;
    for (std::size_t i = 0; i < subdivided.layers.size(); ++i) {
        const ObjectLayer &layer = subdivided.layers[i];
        if (layer.isHidden()) continue;
        LayerFill fill(geometry.layers[i], layer, polygons, source.transform);
        forEachDrawnPolygon(layer, [&](std::size_t polygon) {
            if (drawn >= polygons.count()) failForOtherPolygons(source.file);
            fill.take(polygon, drawn++);
        });
        fill.takeToCage();
        fill.result.layer = i;
        if (fill.hasValues) layers.push_back(std::move(fill.result));
    }
    if (drawn != polygons.count() || layers.empty()) failForOtherPolygons(source.file);
    return layers;
}

} // namespace velm::host
