// The control cage of a layer's subdivision surfaces. For subdivision.cpp.
#pragma once

#include "host/object/object_geometry.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// Points and corners are numbered by int, as OpenSubdiv does.
struct Cage {
    std::vector<int> sizes;              // by face: the number of its corners, which are all different points
    std::vector<int> corners;            // of all faces: indices into `points`
    std::vector<std::uint32_t> polygons; // by face: a polygon of the layer, in ascending order
    std::vector<std::uint32_t> points;   // points of the layer
};

// The cage of all PTCH and SUBD polygons of a layer. A corner that repeats the previous one is dropped. Polygons with
// fewer than three corners are left out; so are those that have a point twice, which are added to the losses.
Cage cageOf(const ObjectLayer &layer, Losses &losses);

// A vertex map at the corners of a cage. Corners with equal values at the same point have the same number of a value,
// so that the map is continuous there.
struct CageMap {
    using Value = std::array<float, 4>; // the first `size` numbers are used; NaN where the map has no value

    std::uint32_t type = 0, size = 0;
    std::string name;
    MapSubdivision subdivision = MapSubdivision::linear;
    std::vector<Value> values;
    std::vector<int> numbers; // by corner: an index into `values`
};

// The UV maps, weight maps and colour maps of a layer that have values at its cage. If one corner of a face has no
// value, the other corners of the face have none either.
std::vector<CageMap> mapsOfCage(const ObjectLayer &layer, const Cage &cage);

} // namespace velm::host
