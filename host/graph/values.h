// Values of the connection types, and their conversion.
#pragma once

#include <limits>

namespace velm::host {

// Converts a value of one connection type to another. `from` and `to` may be the same address. [any thread]
//   colour, material -> scalar   luminance, 0.299 R + 0.587 G + 0.114 B (ITU-R BT.601)
//   vector -> scalar             the same, with X, Y and Z as red, green and blue
//   scalar, integer -> colour, vector   the value in each component
//   anything -> integer          through the scalar; see truncateToInt
//   material -> colour, vector   the diffuse colour
//   anything -> material         the diffuse colour; everything else is 0
//   function                     as a scalar; but see evaluateInput
void convertValue(int fromType, const void *from, int toType, void *to);

// Size in bytes of a value of a connection type; 0 for an unknown type. [any thread]
int valueSize(int type);

// "colour", "scalar" and so on; "unknown" for an unknown type. [any thread]
const char *typeName(int type);

// Rounded towards zero; the nearest int where the number is out of range; 0 for NaN. [any thread]
inline int truncateToInt(double value) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    if (value != value) return 0;
    if (value <= kLowest) return kLowest;
    if (value >= kHighest) return kHighest;
    return static_cast<int>(value);
}

} // namespace velm::host
