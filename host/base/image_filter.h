// Changes to the colours of an image, such as to its brightness.
#pragma once

namespace velm::host {

// In the formulas, v is a component as stored in the file, from 0 to 1, and a is the amount:
// - brightness: v + a.
// - contrast: 0.5 + (1 + a) (v - 0.5).
// - saturation: the saturation s = (max - min) / max of the three components becomes s + a, clamped to 0..1. The
//   largest component stays the same, and so do greys.
// - hue: rotated by a; 1 is a full turn, so that 1/3 makes red green.
// - gamma: v^(1 / a), or 0 where a is not above 0.
// - negative: 1 - v.
// Results below 0 become 0. For files of 8-bit and 16-bit integers, results above 1 become 1.
struct ImageFilter {
    enum class Kind { brightness, contrast, saturation, hue, gamma, negative };
    Kind kind = Kind::brightness;
    double amount = 0; // finite; the negative does not use it

    bool operator==(const ImageFilter &) const = default;
};

} // namespace velm::host
