// What LightWave's object files are made of: layers, parts and vertex maps.
#pragma once

#include "host/cli/json_output.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

struct MapInfo {
    std::string type; // four characters: "TXUV", "WGHT", "RGB "
    std::string name;
    bool operator==(const MapInfo &) const = default;
};

struct LayerInfo {
    std::uint32_t number = 0; // as in the file, where they are counted from 0
    std::string name;
    bool isHidden = false;                // its polygons are not drawn
    std::array<float, 3> pivot{};         // metres; points are not relative to it
    std::optional<std::uint32_t> parent;  // the number of another layer
    std::size_t points = 0, polygons = 0; // as the file has them, before triangulation
    std::vector<MapInfo> maps;            // each once, in the file's order
};

struct ObjectParts {
    std::vector<LayerInfo> layers;
    std::vector<std::string> parts; // names of groups of polygons, in order of first use
};

// Reads an object file. Empty for a mesh file of another format. InputError for a damaged file. [any thread]
ObjectParts partsOfObject(const std::string &file);

// One line for each layer, with its number first.
std::string layerText(const LayerInfo &layer);
Json layersJson(const ObjectParts &parts);

} // namespace velm::host
