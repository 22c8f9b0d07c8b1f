// The renderer's vectors: three components in double precision.
#pragma once

#include "host/scene/format/description.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velm::host {

struct Vec3 {
    double x = 0, y = 0, z = 0;

    Vec3() = default;
    constexpr Vec3(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}
    explicit Vec3(const Double3 &triple) : x(triple[0]), y(triple[1]), z(triple[2]) {}
    explicit Vec3(const double triple[3]) : x(triple[0]), y(triple[1]), z(triple[2]) {}

    void store(double triple[3]) const {
        triple[0] = x;
        triple[1] = y;
        triple[2] = z;
    }
    Vec3 &operator+=(const Vec3 &other) {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    Vec3 operator-() const { return {-x, -y, -z}; }
    bool operator==(const Vec3 &) const = default;
};

inline Vec3 operator+(const Vec3 &a, const Vec3 &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(const Vec3 &a, const Vec3 &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator*(const Vec3 &a, const Vec3 &b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; } // by component
inline Vec3 operator*(double factor, const Vec3 &a) { return {factor * a.x, factor * a.y, factor * a.z}; }
inline double dot(const Vec3 &a, const Vec3 &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 cross(const Vec3 &a, const Vec3 &b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const Vec3 &a) { return std::sqrt(dot(a, a)); }
inline double largest(const Vec3 &a) { return std::max({std::fabs(a.x), std::fabs(a.y), std::fabs(a.z)}); }
inline bool isFinite(const Vec3 &a) { return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z); }

// The unit vector along `a`, also for very long and very short ones; `otherwise` when it has no direction.
inline Vec3 normalised(const Vec3 &a, const Vec3 &otherwise = {0, 0, 1}) {
    const double scale = largest(a);
    if (!(scale > 0) || !isFinite(a)) return otherwise;
    const Vec3 scaled{a.x / scale, a.y / scale, a.z / scale};
    return 1 / length(scaled) * scaled;
}

// The vector in single precision. Adding 0 turns minus zero into zero, so that equal vectors have equal bytes.
inline std::array<float, 3> narrowed(const Vec3 &a) {
    return {static_cast<float>(a.x) + 0.0f, static_cast<float>(a.y) + 0.0f, static_cast<float>(a.z) + 0.0f};
}

// The direction of a ray that comes in along `direction`, mirrored at a plane with the unit normal `normal`.
inline Vec3 mirrored(const Vec3 &direction, const Vec3 &normal) {
    return direction - 2 * dot(direction, normal) * normal;
}

} // namespace velm::host
