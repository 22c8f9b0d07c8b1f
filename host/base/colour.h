// Colours as three doubles: red, green, blue, 1.0 for full.
#pragma once

namespace velm::host {

// Luminance by the weights of ITU-R BT.601: 0.299 red, 0.587 green and 0.114 blue. A colour that is connected to a
// scalar input is converted by it. The formula is arranged so that the luminance of a grey is exactly its component.
constexpr double luminance(double red, double green, double blue) {
    return green + 0.299 * (red - green) + 0.114 * (blue - green);
}

} // namespace velm::host
