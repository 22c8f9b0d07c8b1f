// Changes to the colours of an image, such as to its brightness.
#pragma once

namespace velm::host {

// With v for a component as the file has it, 1 for full, and a for the amount:
// - brightness: v + a.
// - contrast: 0.5 + (1 + a) (v - 0.5).
// - saturation: s + a, within 0 to 1, instead of the saturation s = (max - min) / max of the three components. The
//   largest one stays; greys stay as they are.
// - hue: turned by a; 1 is the whole circle, so that 1/3 makes red green.
// - gamma: v^(1 / a), or 0 where a is not above 0.
// - negative: 1 - v.
// Results below 0 become 0, and for files of integers results above 1 become 1.
struct ImageFilter {
    enum class Kind { brightness, contrast, saturation, hue, gamma, negative };
    Kind kind = Kind::brightness;
    double amount = 0; // finite; not used by the negative

    bool operator==(const ImageFilter &) const = default;
};

} // namespace velm::host
