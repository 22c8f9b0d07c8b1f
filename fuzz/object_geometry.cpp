// Fuzzes the geometry of object files, its subdivision, writing a vertex map into them, and the surfaces of old ones.
#include "fuzz/require.h"

#include "host/object/object_geometry.h"
#include "host/object/old_surfaces.h"
#include "host/object/subdivision.h"
#include "host/object/vertex_map_writer.h"

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

// Values at all corners: such that some points have different ones.
CornerMap mapFor(const ObjectGeometry &geometry) {
    CornerMap map{.type = fourCC("WGHT"), .size = 1, .name = "Baked", .tolerance = 0.1, .layers = {}};
    for (std::size_t i = 0; i < geometry.layers.size(); ++i) {
        const std::size_t corners = geometry.layers[i].corners.size();
        LayerCornerValues &layer = map.layers.emplace_back();
        layer.layer = i;
        layer.weights.assign(corners, 1);
        for (std::size_t corner = 0; corner < corners; ++corner) layer.numbers.push_back(corner % 5 == 0 ? 1.0F : 0.5F);
    }
    return map;
}

// The maps of an object that are not the one above.
std::vector<ObjectVertexMap> otherMaps(const ObjectLayer &layer) {
    std::vector<ObjectVertexMap> maps = layer.maps;
    std::erase_if(maps, [](const ObjectVertexMap &map) { return map.type == fourCC("WGHT") && map.name == "Baked"; });
    return maps;
}

bool areAlike(const ObjectVertexMap &a, const ObjectVertexMap &b) {
    return a.type == b.type && a.name == b.name && a.points == b.points && a.polygons == b.polygons &&
           a.numbers == b.numbers;
}

// Writes a map, and requires that everything else is as before, and that writing it once more changes nothing.
void writeMap(std::string_view bytes, const ObjectGeometry &before) {
    const std::string once = withVertexMap(bytes, kName, before, mapFor(before));
    const ObjectGeometry after = readObject(once, kName);
    require(withVertexMap(once, kName, after, mapFor(after)) == once, "a map that is written twice is written once");
    require(after.layers.size() == before.layers.size() && after.tags == before.tags, "layers and tags stay");
    for (std::size_t i = 0; i < before.layers.size(); ++i) {
        const ObjectLayer &a = before.layers[i], &b = after.layers[i];
        require(a.points == b.points && a.corners == b.corners && a.ends == b.ends, "points and polygons stay");
        require(a.surfaces == b.surfaces && a.parts == b.parts, "tags of polygons stay");
        require(std::ranges::equal(otherMaps(a), otherMaps(b), areAlike), "other maps stay");
        require(a.corners.empty() || otherMaps(b).size() < b.maps.size(), "the map is there");
    }
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
    acceptsInput(kName, [&] { writeMap(bytes, readObject(bytes, kName)); });
    acceptsInput(kName, [&] { readOldSurfaces(bytes, kName); });
    return 0;
}
