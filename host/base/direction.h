// The angles of directions, which may have any length: what backdrops and images spread over the sphere go by.
#pragma once

#include <cmath>

namespace velm::host {

// The length of what is level of a direction; like std::hypot, but for a step that most directions need not take: the
// squares of numbers beside these limits do not fit a double.
inline double levelLength(const double direction[3]) {
    constexpr double kSmall = 1e-280, kLarge = 1e280;
    const double square = direction[0] * direction[0] + direction[2] * direction[2];
    if (square > kSmall && square < kLarge) [[likely]]
        return std::sqrt(square);
    return std::hypot(direction[0], direction[2]);
}

} // namespace velm::host
