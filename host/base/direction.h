// Angles of directions of any length, for backdrops and for images that are mapped onto a sphere.
#pragma once

#include <cmath>

namespace velm::host {

// The length of the horizontal part (x and z) of a direction, like std::hypot. The fast path covers nearly all
// directions; beyond the limits, squares would underflow or overflow.
inline double levelLength(const double direction[3]) {
    constexpr double kSmall = 1e-280, kLarge = 1e280;
    const double square = direction[0] * direction[0] + direction[2] * direction[2];
    if (square > kSmall && square < kLarge) [[likely]]
        return std::sqrt(square);
    return std::hypot(direction[0], direction[2]);
}

} // namespace velm::host
