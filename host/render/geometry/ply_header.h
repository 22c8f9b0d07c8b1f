// The header of PLY files (Turk, "The PLY Polygon File Format", 1994): which elements follow, and what each consists
// of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

enum class PlyType { int8, uint8, int16, uint16, int32, uint32, float32, float64 };

// The bytes that a value takes in binary files.
constexpr std::size_t sizeOf(PlyType type) {
    constexpr std::size_t kSizes[] = {1, 1, 2, 2, 4, 4, 4, 8};
    return kSizes[static_cast<std::size_t>(type)];
}

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::float32;  // of the value, or of each value of a list
    std::optional<PlyType> countType; // of a list: the number of values, which precedes them
};

// Elements of one kind, such as all vertices.
struct PlyElement {
    std::string name;
    std::uint64_t count = 0; // that the file claims, which may be wrong
    std::vector<PlyProperty> properties;

    // The index of the first property with one of these names.
    std::optional<std::size_t> find(std::span<const std::string_view> names) const;
};

enum class PlyEncoding { text, littleEndian, bigEndian };

struct PlyHeader {
    PlyEncoding encoding = PlyEncoding::text;
    std::vector<PlyElement> elements; // in the order of the file
    bool namesTexture = false;        // whether a comment names an image
    std::size_t size = 0;             // in bytes: where the first element begins
    int lines = 0;

    const PlyElement *find(std::string_view name) const; // null: none
};

// Reads the header at the start of a PLY file. Throws InputError, with the file's name and the line, if it does not
// end, or has a format, type, number or property that PLY files cannot have. [any thread]
PlyHeader readPlyHeader(std::string_view bytes, const std::string &file);

} // namespace velm::host
