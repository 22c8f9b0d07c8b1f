// The geometry of LightWave's object files: layers with points, polygons and vertex maps, as the file has them.
//
// Three forms are read. LWO2 is that of LightWave 6 to 2015; LWOB that of LightWave 5 and earlier, and LWLO the same
// with layers. Axes are left-handed with +Y up and +Z forward, lengths are in metres. Surfaces are read elsewhere: see
// host/files/object_file.h for LWO2, and old_surfaces.h for the other two.
#pragma once

#include "host/base/four_cc.h"
#include "host/object/losses.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

constexpr std::uint32_t kNoTag = 0xffffffff; // a polygon without a tag of that kind

// The polygon types that are drawn: plain polygons, and two kinds of control cages of subdivision surfaces.
constexpr std::uint32_t kFacePolygons = fourCC("FACE"), kPatchPolygons = fourCC("PTCH"),
                        kSubdivisionPolygons = fourCC("SUBD");

// Polygons of one type that follow each other: those of one chunk.
struct ObjectPolygons {
    std::uint32_t type = 0;           // kFacePolygons and so on; others as the file has them, such as "CURV"
    std::size_t first = 0, count = 0; // polygons of the layer
    bool isReplaced = false;          // a cage whose subdivided polygons are in the layer, too: see subdivision.h

    // Whether these are plain polygons or the cage of a subdivision surface that is not replaced.
    bool areDrawn() const { return type == kFacePolygons || (areCage() && !isReplaced); }
    bool areCage() const { return type == kPatchPolygons || type == kSubdivisionPolygons; }
};

// How the values of a vertex map are interpolated where a control cage is subdivided: linearly everywhere, along the
// edges or at the corners of its borders, or nowhere. Borders are also where the map is discontinuous.
enum class MapSubdivision : std::uint8_t { linear, smooth, linearCorners, linearEdges };

// The values of one chunk: of points, or of the corners of polygons, which override those of points in the map of the
// same type and name.
struct ObjectVertexMap {
    std::uint32_t type = 0; // "TXUV", "WGHT", "RGB ", "RGBA", "MORF", "SPOT", "NORM", ...
    std::uint32_t size = 0; // numbers in each value; may be 0
    std::string name;
    bool isOfCorners = false;
    MapSubdivision subdivision = MapSubdivision::linear;
    std::vector<std::uint32_t> points;   // by value
    std::vector<std::uint32_t> polygons; // by value, where they are of corners; else empty
    std::vector<float> numbers;          // `size` for each value

    // Whether it holds UV coordinates, weights or colours, which meshes have.
    bool isOfMeshes() const;
};

struct ObjectLayer {
    std::uint32_t number = 0; // counted from 0
    static constexpr std::uint32_t kHidden = 1;
    std::uint32_t flags = 0; // of an LWO2 object: kHidden, and others that nothing here depends on
    std::string name;
    std::array<float, 3> pivot{};                              // points are not relative to it
    std::optional<std::uint32_t> parent;                       // the number of another layer
    std::optional<std::array<std::array<float, 3>, 2>> bounds; // as the file says: low and high ends. Unverified

    std::vector<std::array<float, 3>> points;
    // By point: the normal of the subdivision surface that it is on, of unit length and pointing out of the front; zero
    // for other points, and where the surface has none. Empty: no point has one.
    std::vector<std::array<float, 3>> normals;
    std::vector<std::uint32_t> corners;   // points of all polygons, clockwise as seen from the front
    std::vector<std::uint32_t> ends;      // by polygon: where its corners end in `corners`
    std::vector<ObjectPolygons> polygons; // all polygons, in order, by type
    // By polygon, an index into ObjectGeometry::tags, or kNoTag. Shorter than `ends`, if the last ones have none.
    std::vector<std::uint32_t> surfaces, parts, smoothingGroups;
    std::vector<ObjectVertexMap> maps;

    bool isHidden() const { return (flags & kHidden) != 0; }
    std::size_t begin(std::size_t polygon) const { return polygon == 0 ? 0 : ends[polygon - 1]; }
    std::uint32_t surfaceTag(std::size_t polygon) const {
        return polygon < surfaces.size() ? surfaces[polygon] : kNoTag;
    }
};

// All indices are within their ranges.
struct ObjectGeometry {
    std::vector<std::string> tags; // names of surfaces, parts and smoothing groups
    std::vector<ObjectLayer> layers;
    Losses losses; // what the file has besides, and what is wrong in it without being an error

    // The name of a polygon's surface; "Default" for a polygon that has none.
    const std::string &surfaceOf(const ObjectLayer &layer, std::size_t polygon) const;
};

// Where something is, for users: "layer 2 "Wheels"", "polygon 5 of layer 0". [any thread]
std::string placeOf(const ObjectLayer &layer);
std::string placeOf(const ObjectLayer &layer, std::size_t polygon);

// Whether these are the first bytes of an object file of any form, at least 12 of them.
bool isObject(std::string_view head);

// Reads the bytes of an object file; `file` is its name, for errors. Throws InputError, with the chunk and the byte,
// for a file that is truncated, whose polygons have points that are not there, or that has another form. Allocates no
// more than some ten times the size of the file, and usually less than that size. [any thread]
ObjectGeometry readObject(std::string_view bytes, const std::string &file);

// Calls `use` with the index of each polygon of a layer that is drawn: of a drawn type, with three points or more.
template <class Use>
void forEachDrawnPolygon(const ObjectLayer &layer, const Use &use) {
    for (const ObjectPolygons &group : layer.polygons) {
        if (!group.areDrawn()) continue;
        for (std::size_t polygon = group.first; polygon < group.first + group.count; ++polygon)
            if (layer.ends[polygon] - layer.begin(polygon) >= 3) use(polygon);
    }
}

// The names of the surfaces of the drawn polygons of visible layers, in order of their first use. The file need not
// have a surface of that name. [any thread]
std::vector<std::string> surfacesOfPolygons(const ObjectGeometry &geometry);

} // namespace velm::host
