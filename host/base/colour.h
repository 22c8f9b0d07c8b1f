// Colours as three doubles: red, green, blue, 1.0 for full.
#pragma once

namespace velm::host {

// Brightness of a colour: ITU-R BT.601 weights, 0.299 red, 0.587 green and 0.114 blue, the same as where a colour feeds
// a scalar. Put so that a grey's is exactly its component.
constexpr double luminance(double red, double green, double blue) {
    return green + 0.299 * (red - green) + 0.114 * (blue - green);
}

} // namespace velm::host
