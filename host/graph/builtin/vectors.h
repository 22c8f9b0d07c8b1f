// Vectors of three components, for nodes that compute with directions. [any thread]
#pragma once

#include <array>
#include <cmath>

namespace velm::host::builtin {

using Vector = std::array<double, 3>;

inline double dot(const Vector &a, const Vector &b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vector cross(const Vector &a, const Vector &b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double lengthOf(const Vector &vector) { return std::hypot(vector[0], vector[1], vector[2]); }

// The vector with a length of 1; {0, 0, 0} has no direction and stays as it is.
inline Vector normalised(Vector vector) {
    const double length = lengthOf(vector);
    if (length > 0)
        for (double &component : vector) component /= length;
    return vector;
}

// a + factor b
inline Vector addScaled(Vector a, double factor, const Vector &b) {
    for (std::size_t i = 0; i < 3; ++i) a[i] += factor * b[i];
    return a;
}

} // namespace velm::host::builtin
