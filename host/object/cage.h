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
    std::vector<int> corners;            // of all faces: numbers of points
    std::vector<std::uint32_t> polygons; // by face: a polygon of the layer, in ascending order
    std::vector<std::uint32_t> points;   // by number of a point: a point of the layer
};

// Polygons with fewer than three points are left out. So are those with a point twice, which is added to the losses,
// unless one corner repeats the other.
Cage cageOf(const ObjectLayer &layer, Losses &losses);

// A vertex map at the corners of a cage. Corners that have the same value of the same point share it, so that the map
// is continuous there.
struct CageMap {
    using Value = std::array<float, 4>; // the first `size` numbers count; NaN where the map has no value

    std::uint32_t type = 0, size = 0;
    std::string name;
    MapSubdivision subdivision = MapSubdivision::linear;
    std::vector<Value> values;
    std::vector<int> numbers; // by corner: the value's
};

// The UV maps, weight maps and colour maps of a layer that have values at its cage. A face with a corner that has no
// value has none at all.
std::vector<CageMap> mapsOfCage(const ObjectLayer &layer, const Cage &cage);

} // namespace velm::host
