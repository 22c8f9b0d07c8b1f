// The sRGB transfer curve (IEC 61966-2-1), for files that hold display values.
#pragma once

namespace velm::host {

// Converts a display value, 0 to 1, to linear light.
double srgbToLinear(double encoded);

// Converts linear light to a display value of 0 to 1. Light out of range is clamped; NaN gives 0.
double linearToSrgb(double linear);

// Compresses linear light of any brightness to 0 to 1, which a display can show: S-shaped, with 0.8038 for 1. Light
// below 0 and NaN give 0. Narkowicz, "ACES Filmic Tone Mapping Curve", 2016: a fit of the tone scale of the Academy
// Color Encoding System.
double filmicCurve(double light);

} // namespace velm::host
