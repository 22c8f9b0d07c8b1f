// Fuzzes the geometry of object files, its subdivision, and the surfaces of old ones.
#include "fuzz/require.h"

#include "host/object/object_geometry.h"
#include "host/object/old_surfaces.h"
#include "host/object/subdivision.h"

#include <algorithm>

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.lwo";

bool areBelow(const std::vector<std::uint32_t> &indices, std::size_t limit) {
    return std::ranges::all_of(indices, [limit](std::uint32_t index) { return index < limit; });
}

bool areTags(const std::vector<std::uint32_t> &tags, const ObjectGeometry &geometry) {
    return std::ranges::all_of(tags, [&](std::uint32_t tag) { return tag == kNoTag || tag < geometry.tags.size(); });
}

void requireWhole(const ObjectVertexMap &map, const ObjectLayer &layer) {
    require(areBelow(map.points, layer.points.size()), "values of maps have a point");
    require(areBelow(map.polygons, layer.ends.size()), "values of maps have a polygon");
    require(map.polygons.size() == (map.isOfCorners ? map.points.size() : 0), "only values of corners have a polygon");
    require(map.numbers.size() == map.points.size() * map.size, "values of maps are whole");
}

void requireWhole(const ObjectLayer &layer, const ObjectGeometry &geometry) {
    require(areBelow(layer.corners, layer.points.size()), "corners are points");
    require(std::ranges::is_sorted(layer.ends), "polygons follow each other");
    require(layer.ends.empty() ? layer.corners.empty() : layer.ends.back() == layer.corners.size(),
            "corners belong to polygons");
    std::size_t polygons = 0;
    for (const ObjectPolygons &group : layer.polygons) {
        require(group.first == polygons, "types of polygons follow each other");
        polygons += group.count;
    }
    require(polygons == layer.ends.size(), "every polygon has a type");
    for (const auto *tags : {&layer.surfaces, &layer.parts, &layer.smoothingGroups}) {
        require(areTags(*tags, geometry), "polygons have tags of the object");
        require(tags->size() <= layer.ends.size(), "tags have a polygon");
    }
    for (const ObjectVertexMap &map : layer.maps) requireWhole(map, layer);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const std::string_view bytes = asText(data, size);
    acceptsInput(kName, [&] {
        ObjectGeometry geometry = readObject(bytes, kName);
        for (const ObjectLayer &layer : geometry.layers) requireWhole(layer, geometry);
        subdivide(geometry, {.level = 2, .mostBytes = 16U << 20}, kName);
        for (const ObjectLayer &layer : geometry.layers) requireWhole(layer, geometry);
        surfacesOfPolygons(geometry);
        geometry.losses.texts();
    });
    acceptsInput(kName, [&] { readOldSurfaces(bytes, kName); });
    return 0;
}
