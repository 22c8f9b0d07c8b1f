#include "host/render/geometry/transform.h"

#include "host/base/angles.h"

#include <cstddef>

namespace velm::host {

double Matrix::determinant() const {
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) + m[2] * (m[3] * m[7] - m[4] * m[6]);
}

Matrix Matrix::operator*(const Matrix &other) const {
    Matrix result;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result.m[3 * row + column] = m[3 * row] * other.m[column] + m[3 * row + 1] * other.m[3 + column] +
                                         m[3 * row + 2] * other.m[6 + column];
    return result;
}

Matrix Matrix::inverse() const {
    const double factor = 1 / determinant();
    Matrix result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            // The cofactor of the transposed element; the cyclic order of rows and columns yields its sign.
            const int r1 = (column + 1) % 3, r2 = (column + 2) % 3, c1 = (row + 1) % 3, c2 = (row + 2) % 3;
            result.m[3 * row + column] = factor * (m[3 * r1 + c1] * m[3 * r2 + c2] - m[3 * r1 + c2] * m[3 * r2 + c1]);
        }
    }
    return result;
}

bool Matrix::keepsAngles() const {
    constexpr double kPrecision = 1e-9;
    const Vec3 x{m[0], m[3], m[6]}, y{m[1], m[4], m[7]}, z{m[2], m[5], m[8]};
    const double square = dot(x, x), error = kPrecision * square;
    return std::fabs(dot(y, y) - square) <= error && std::fabs(dot(z, z) - square) <= error &&
           std::fabs(dot(x, y)) <= error && std::fabs(dot(y, z)) <= error && std::fabs(dot(z, x)) <= error;
}

Matrix rotationMatrix(const Double3 &headingPitchBank) {
    const double ch = std::cos(headingPitchBank[0] * kRadiansPerDegree),
                 sh = std::sin(headingPitchBank[0] * kRadiansPerDegree);
    const double cp = std::cos(headingPitchBank[1] * kRadiansPerDegree),
                 sp = std::sin(headingPitchBank[1] * kRadiansPerDegree);
    const double cb = std::cos(headingPitchBank[2] * kRadiansPerDegree),
                 sb = std::sin(headingPitchBank[2] * kRadiansPerDegree);
    // Heading times pitch times bank, with heading (ch 0 sh; 0 1 0; -sh 0 ch), pitch (1 0 0; 0 cp -sp; 0 sp cp) and
    // bank (cb -sb 0; sb cb 0; 0 0 1).
    return {.m = {ch * cb + sh * sp * sb, -ch * sb + sh * sp * cb, sh * cp, //
                  cp * sb, cp * cb, -sp,                                    //
                  -sh * cb + ch * sp * sb, sh * sb + ch * sp * cb, ch * cp}};
}

namespace {

constexpr double kUpright = 1e-6; // smaller sines and cosines of angles count as 0

Matrix fromColumns(const Vec3 &right, const Vec3 &up, const Vec3 &forward) {
    return {.m = {right.x, up.x, forward.x, right.y, up.y, forward.y, right.z, up.z, forward.z}};
}

} // namespace

Matrix lookAlong(const Vec3 &direction) {
    const Vec3 forward = normalised(direction);
    const Vec3 level = cross({0, 1, 0}, forward); // in left-handed axes: up, forward -> right
    const Vec3 right = normalised(level, {1, 0, 0});
    return fromColumns(right, cross(forward, right), forward);
}

Matrix lookAlong(const Vec3 &direction, const Vec3 &up) {
    const Vec3 forward = normalised(direction);
    const Vec3 level = cross(normalised(up), forward);
    if (!(largest(level) > kUpright)) return lookAlong(direction);
    const Vec3 right = normalised(level);
    return fromColumns(right, cross(forward, right), forward);
}

Double3 anglesOf(const Matrix &rotation) {
    const double *m = rotation.m;
    const double level = std::hypot(m[2], m[8]); // the cosine of the pitch
    const double pitch = std::atan2(-m[5], level) * kDegreesPerRadian;
    if (level < kUpright) return {std::atan2(-m[6], m[0]) * kDegreesPerRadian, pitch, 0};
    return {std::atan2(m[2], m[8]) * kDegreesPerRadian, pitch, std::atan2(m[3], m[4]) * kDegreesPerRadian};
}

Matrix withoutScale(const Matrix &matrix) {
    const Vec3 forward = normalised(matrix * Vec3{0, 0, 1});
    const Vec3 upwards = matrix * Vec3{0, 1, 0};
    const Vec3 up = normalised(upwards - dot(upwards, forward) * forward, {0, 1, 0});
    return fromColumns(cross(up, forward), up, forward);
}

Transform::Transform(const TransformDescription &description)
    : Transform(description, rotationMatrix(description.rotation)) {}

Transform::Transform(const TransformDescription &description, const Matrix &rotation) : toWorld(rotation) {
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) toWorld.m[3 * row + column] *= description.scale[column];
    toObject = toWorld.inverse();
    position = Vec3(description.position) - toWorld * Vec3(description.pivot);
}

Transform Transform::operator*(const Transform &other) const {
    Transform result;
    result.toWorld = toWorld * other.toWorld;
    result.toObject = result.toWorld.inverse();
    result.position = pointToWorld(other.position);
    return result;
}

} // namespace velm::host
