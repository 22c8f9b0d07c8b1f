#include "host/object/layer_list.h"

#include <algorithm>

namespace velm::host {

std::vector<LayerSummary> layersOfObject(std::string_view bytes, const std::string &file) {
    std::vector<LayerSummary> layers;
    for (const ObjectLayer &layer : readObject(bytes, file).layers) {
        LayerSummary &summary = layers.emplace_back(
            LayerSummary{.number = layer.number, .pivot = layer.pivot, .isHidden = layer.isHidden()});
        forEachDrawnPolygon(layer, [&summary](std::size_t) { summary.hasPolygons = true; });
    }
    return layers;
}

const LayerSummary *findSceneLayer(const std::vector<LayerSummary> &layers, std::uint32_t number) {
    for (const std::uint32_t wanted : {number - 1, number})
        if (const auto found = std::ranges::find(layers, wanted, &LayerSummary::number); found != layers.end())
            return &*found;
    return layers.size() == 1 ? &layers.front() : nullptr;
}

} // namespace velm::host
