// Fills the layers of an object's geometry while its chunks are read. For the readers of this directory.
#pragma once

#include "host/object/iff.h"
#include "host/object/object_geometry.h"

#include <algorithm>

namespace velm::host {

// Reserves room for more elements. Repeated calls take time in proportion to what is added.
template <class Element>
void makeRoom(std::vector<Element> &elements, std::size_t more) {
    const std::size_t needed = elements.size() + more;
    if (needed > elements.capacity()) elements.reserve(std::max(needed, 2 * elements.capacity()));
}

std::array<float, 3> readVector(ChunkCursor &cursor);

class LayerBuilder {
  public:
    explicit LayerBuilder(ObjectGeometry &geometry) : geometry_(geometry) {}

    // The layer that is being filled. What comes before the first layer is in one with the number 0.
    ObjectLayer &layer();
    void startLayer(ObjectLayer layer);

    // PNTS: points, to which the indices of the following chunks refer.
    void readPoints(ChunkCursor cursor);
    // The index in the layer of a point as the chunks number it; nothing if there is none.
    std::optional<std::uint32_t> point(std::uint32_t index) const {
        if (index >= pointCount_) return std::nullopt;
        return firstPoint_ + index;
    }
    std::uint32_t pointCount() const { return pointCount_; }

    // Polygons, to which the following tags and maps refer. `polygonCount` and `cornerCount` are for reserving memory.
    void startPolygons(std::uint32_t type, std::size_t polygonCount, std::size_t cornerCount);
    // Ends a polygon; its corners have been appended to those of the layer.
    void endPolygon();
    // The index in the layer of a polygon as the chunks number it; nothing if there is none.
    std::optional<std::size_t> polygon(std::uint32_t index) const;

    Losses &losses() { return geometry_.losses; }
    std::size_t tagCount() const { return geometry_.tags.size(); }

  private:
    ObjectGeometry &geometry_;
    std::uint32_t firstPoint_ = 0, pointCount_ = 0; // of the last chunk of points
};

// The readers of the forms.
void readNewObject(const IffFile &file, ObjectGeometry &geometry); // LWO2
void readOldObject(const IffFile &file, ObjectGeometry &geometry); // LWOB and LWLO

} // namespace velm::host
