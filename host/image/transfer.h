// The sRGB transfer curve (IEC 61966-2-1), for files that hold display values.
#pragma once

namespace velm::host {

// Converts a display value, 0 to 1, to linear light.
double srgbToLinear(double encoded);

// Converts linear light to a display value of 0 to 1. Light out of range is clamped; NaN gives 0.
double linearToSrgb(double linear);

} // namespace velm::host
