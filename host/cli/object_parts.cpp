#include "host/cli/object_parts.h"

#include "host/base/names.h"
#include "host/io/file_ends.h"
#include "host/io/files.h"
#include "host/object/object_geometry.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unordered_set>

namespace velm::host {

namespace {

LayerInfo layerInfo(const ObjectLayer &layer) {
    LayerInfo info{.number = layer.number,
                   .name = layer.name,
                   .isHidden = layer.isHidden(),
                   .pivot = layer.pivot,
                   .parent = layer.parent,
                   .points = layer.points.size(),
                   .polygons = layer.ends.size(),
                   .maps = {}};
    for (const ObjectVertexMap &map : layer.maps) {
        const MapInfo one{.type = blockName(map.type), .name = map.name};
        if (std::ranges::count(info.maps, one) == 0) info.maps.push_back(one);
    }
    return info;
}

std::string mapText(const MapInfo &map) { return fmt::format("{} {}", map.type, inQuotes(map.name)); }

} // namespace

ObjectParts partsOfObject(const std::string &file) {
    if (!isObject(readFileEnds(file).head)) return {};
    const ObjectGeometry geometry = readObject(readFile(file), file);
    ObjectParts found;
    std::unordered_set<std::uint32_t> seen{kNoTag};
    for (const ObjectLayer &layer : geometry.layers) {
        found.layers.push_back(layerInfo(layer));
        for (const std::uint32_t tag : layer.parts)
            if (seen.insert(tag).second) found.parts.push_back(geometry.tags[tag]);
    }
    return found;
}

std::string layerText(const LayerInfo &layer) {
    std::string text =
        fmt::format("{} {}: {} points, {} polygons", layer.number, inQuotes(layer.name), layer.points, layer.polygons);
    if (layer.isHidden) text += ", hidden";
    if (layer.parent) text += fmt::format(", child of layer {}", *layer.parent);
    if (layer.pivot != std::array<float, 3>{}) text += fmt::format(", pivot {:.6g}", fmt::join(layer.pivot, " "));
    for (std::size_t i = 0; i < layer.maps.size(); ++i) text += (i == 0 ? ", maps " : ", ") + mapText(layer.maps[i]);
    return text;
}

Json layersJson(const ObjectParts &parts) {
    Json all = Json::array();
    for (const LayerInfo &layer : parts.layers) {
        Json one = {{"number", layer.number}, {"name", layer.name},     {"hidden", layer.isHidden},
                    {"pivot", layer.pivot},   {"points", layer.points}, {"polygons", layer.polygons}};
        if (layer.parent) one["parent"] = *layer.parent;
        one["maps"] = Json::array();
        for (const MapInfo &map : layer.maps) one["maps"].push_back({{"type", map.type}, {"name", map.name}});
        all.push_back(one);
    }
    return all;
}

} // namespace velm::host
