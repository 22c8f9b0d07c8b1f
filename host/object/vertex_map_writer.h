// Writes a vertex map into an object file of LightWave 6 to 2015 (LWO2).
#pragma once

#include "host/object/object_geometry.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// The values of a map in one layer, by corner: index i belongs to ObjectLayer::corners[i].
struct LayerCornerValues {
    std::size_t layer = 0;       // an index into ObjectGeometry::layers
    std::vector<float> numbers;  // `size` numbers for each corner; a NaN as the first one: the corner has no value
    std::vector<double> weights; // above 0 for a corner that has a value: its weight in the mean of its point

    bool hasValue(std::size_t corner, std::size_t size) const { return !std::isnan(numbers[corner * size]); }
};

struct CornerMap {
    std::uint32_t type = 0; // "WGHT", "RGB ", "RGBA", ...
    std::uint32_t size = 0; // numbers in each value, at least 1
    std::string name;
    double tolerance = 0; // values that differ by no more than this, in each of their numbers, count as equal
    std::vector<LayerCornerValues> layers; // those that have values, each once
};

// The bytes of an object with this map. A point gets the weighted mean of its corners (VMAP). Where the value of a
// corner is not equal to that of its point, all corners of the point also get their own values (VMAD). In each layer
// that has values, the new map replaces the one of the same type and name. All other bytes remain the same, except for
// the size of the form.
//
// `geometry` is what readObject gave for these bytes; `file` is the name of the file, for errors. Throws InputError for
// a file of another form, for more points than a map can refer to, and if the result exceeds 4 GB. [any thread]
std::string withVertexMap(std::string_view bytes, const std::string &file, const ObjectGeometry &geometry,
                          const CornerMap &map);

} // namespace velm::host
