// Arithmetic of directions.
#pragma once

#include <cmath>

namespace velm::plugin {

inline double dot(const double a[3], const double b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// Scales a vector to unit length. The zero vector is unchanged.
inline void normalise(double v[3]) {
    const double length = std::sqrt(dot(v, v));
    if (length > 0)
        for (int i = 0; i < 3; ++i) v[i] /= length;
}

} // namespace velm::plugin
