// The chunks of object files, made by hand.
#pragma once

#include "tests/files/test_files.h"

#include "host/base/error.h"

#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velm::host::test {

inline std::string reals(const std::vector<float> &numbers) {
    std::string bytes;
    for (const float number : numbers) bytes += big(std::bit_cast<std::uint32_t>(number), 4);
    return bytes;
}
inline std::string words(const std::vector<std::size_t> &numbers) {
    std::string bytes;
    for (const std::size_t number : numbers) bytes += big(number, 2);
    return bytes;
}

// ---- LWO2 ----

inline std::string pointsChunk(const std::vector<float> &coordinates) { return chunk("PNTS", reals(coordinates)); }

inline std::string polygonsChunk(const std::string &type, const std::vector<std::vector<std::size_t>> &polygons) {
    std::string bytes = type;
    for (const std::vector<std::size_t> &polygon : polygons) bytes += big(polygon.size(), 2) + words(polygon);
    return chunk("POLS", bytes);
}

inline std::string tagsChunk(const std::vector<std::string> &tags) {
    std::string bytes;
    for (const std::string &tag : tags) bytes += cString(tag);
    return chunk("TAGS", bytes);
}

// Polygons and their tags.
inline std::string polygonTagsChunk(const std::string &type,
                                    const std::vector<std::pair<std::size_t, std::size_t>> &tags) {
    std::string bytes = type;
    for (const auto &[polygon, tag] : tags) bytes += words({polygon, tag});
    return chunk("PTAG", bytes);
}

inline std::string layerChunk(std::size_t number, std::size_t flags, const std::string &name,
                              const std::string &rest = "") {
    return chunk("LAYR", words({number, flags}) + reals({0, 0, 0}) + cString(name) + rest);
}

struct MapValue {
    std::size_t point;
    std::vector<float> numbers;
};
inline std::string mapChunk(const std::string &type, std::size_t size, const std::string &name,
                            const std::vector<MapValue> &values) {
    std::string bytes = type + big(size, 2) + cString(name);
    for (const MapValue &value : values) bytes += big(value.point, 2) + reals(value.numbers);
    return chunk("VMAP", bytes);
}

struct CornerMapValue {
    std::size_t point, polygon;
    std::vector<float> numbers;
};
inline std::string cornerMapChunk(const std::string &type, std::size_t size, const std::string &name,
                                  const std::vector<CornerMapValue> &values) {
    std::string bytes = type + big(size, 2) + cString(name);
    for (const CornerMapValue &value : values) bytes += words({value.point, value.polygon}) + reals(value.numbers);
    return chunk("VMAD", bytes);
}

// A square in the plane z = 0, in front of which z is negative, and a triangle beside it.
inline const std::vector<float> kSixPoints = {0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0, 2, 0, 0, 2, 1, 0};
inline const std::vector<std::vector<std::size_t>> kSquareAndTriangle = {{0, 1, 2, 3}, {3, 2, 5}};

// ---- LWOB ----

inline std::string oldObjectFile(const std::string &chunks, const std::string &form = "LWOB") {
    return "FORM" + big(4 + chunks.size(), 4) + form + chunks;
}

// The message of the InputError that some work throws; empty when it throws none.
template <class Work>
std::string errorOf(const Work &work) {
    try {
        work();
        return "";
    } catch (const InputError &error) {
        return error.what();
    }
}

} // namespace velm::host::test
