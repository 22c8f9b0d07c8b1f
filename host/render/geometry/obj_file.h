// Reads the values and polygons of OBJ files on several threads: the file is divided into parts of whole lines. First,
// scanObj counts the contents of the parts, which determines the sizes of all buffers and the indices of each part's
// values. Then the values are read, and after them the polygons, which may refer to values later in the file.
#pragma once

#include "host/render/geometry/transform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct ObjCounts {
    std::size_t lines = 0;
    std::size_t positions = 0, uvs = 0, normals = 0;
    std::size_t polygons = 0, triangles = 0;                  // into which the polygons can be cut
    std::size_t polygonsWithUvs = 0, polygonsWithNormals = 0; // by their first corner

    ObjCounts &operator+=(const ObjCounts &other);
};

struct ObjPart {
    std::string_view text;
    ObjCounts before, own;      // of the preceding parts, and of this part
    bool hasStatements = false; // polygons, or anything else that readObjStatements reads
};

struct ObjParts {
    std::vector<ObjPart> parts; // in the order of the file
    ObjCounts all;
};

// Divides the bytes of a file, which have to outlive the result. Throws InputError (without a source location) for more
// values than indices can count. [any thread]
ObjParts scanObj(std::string_view bytes);

// The values, in world space.
struct ObjValues {
    std::vector<std::array<float, 3>> positions, normals;
    std::vector<std::array<float, 2>> uvs;
};

// Reads the values; nothing for a file whose points have colours. `file` is its name, for errors. Throws InputError for
// numbers that are missing or malformed. [any thread]
std::optional<ObjValues> readObjValues(const ObjParts &parts, const std::string &file, const Transform &transform);

constexpr std::uint32_t kNoObjIndex = 0xffffffff;

// The indices of a corner's values, from 0; kNoObjIndex for none.
struct ObjCorner {
    std::uint32_t position = kNoObjIndex, uv = kNoObjIndex, normal = kNoObjIndex;
};

// A line that names a material or files of materials.
struct ObjName {
    enum class Kind { material, library };
    Kind kind;
    std::size_t polygon; // of the part: the first one that follows
    std::string name;    // without blanks at its ends
};

// The contents of a part other than values.
struct ObjStatements {
    std::vector<ObjCorner> corners;
    std::vector<std::size_t> ends; // by polygon: the number of corners up to and with its last one
    std::vector<ObjName> names;
    std::size_t undrawn = 0;      // lines, points, curves, and faces of fewer than three corners
    std::size_t firstUndrawn = 0; // the number of its line
};

// Reads the statements of a part. `all` are the counts of the whole file. Throws InputError for corners that refer to
// no value. [any thread]
ObjStatements readObjStatements(const ObjPart &part, const ObjCounts &all, const std::string &file);

} // namespace velm::host
