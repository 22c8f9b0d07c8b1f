// Layers: the channels of a picture beside red, green, blue and alpha.
#pragma once

#include <string_view>

namespace velm::host {

// How the samples of a pixel give its value in a channel of a layer.
enum class LayerRule {
    mean,  // of all samples
    first, // the value of the first sample: of distances and numbers, of which a mean would be neither one nor the
           // other
    count  // the number of samples
};

// The value of the channel "depth.Z" where there is no object.
inline constexpr double kNothingSeen = 1e10;

// The rule of a channel, which follows from its name. [any thread]
LayerRule layerRule(std::string_view channel);

} // namespace velm::host
