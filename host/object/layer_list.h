// The layers of object files, without their geometry.
#pragma once

#include "host/object/object_geometry.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct LayerSummary {
    std::uint32_t number = 0; // counted from 0
    std::array<float, 3> pivot{};
    bool isHidden = false;
    bool hasPolygons = false; // that are drawn
};

// In the order of the file. InputError as readObject. [any thread]
std::vector<LayerSummary> layersOfObject(std::string_view bytes, const std::string &file);

// The layer that LightWave's scenes call `number`, which counts from 1: the one before that number, since objects count
// from 0; else the one with that number; else the only one. Null when there is none of these.
const LayerSummary *findSceneLayer(const std::vector<LayerSummary> &layers, std::uint32_t number);

} // namespace velm::host
