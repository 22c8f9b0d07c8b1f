// The sRGB transfer curve (IEC 61966-2-1), for files whose numbers are meant for screens.
#pragma once

namespace velm::host {

// From a file's number, 0 to 1, to linear light.
double srgbToLinear(double encoded);

// From linear light to a file's number: 0 to 1, out-of-range light clamped; what is not a number gives 0.
double linearToSrgb(double linear);

} // namespace velm::host
