#include "host/image/layers.h"

#include <algorithm>

namespace velm::host {

LayerRule layerRule(std::string_view channel) {
    constexpr std::string_view kOfFirstSample[] = {"depth.Z",    "position.X", "position.Y",
                                                   "position.Z", "object.id",  "surface.id"};
    if (channel == "samples.count") return LayerRule::count;
    return std::ranges::count(kOfFirstSample, channel) > 0 ? LayerRule::first : LayerRule::mean;
}

} // namespace velm::host
