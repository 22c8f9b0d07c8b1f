// The position, rotation and scale of an object.
#pragma once

#include "host/render/geometry/vector.h"
#include "host/scene/format/description.h"

namespace velm::host {

// A 3 by 3 matrix in row order, as shading samples hold it.
struct Matrix {
    double m[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    Vec3 operator*(const Vec3 &v) const {
        return {m[0] * v.x + m[1] * v.y + m[2] * v.z, m[3] * v.x + m[4] * v.y + m[5] * v.z,
                m[6] * v.x + m[7] * v.y + m[8] * v.z};
    }
    // The transposed matrix times a vector.
    Vec3 transposedTimes(const Vec3 &v) const {
        return {m[0] * v.x + m[3] * v.y + m[6] * v.z, m[1] * v.x + m[4] * v.y + m[7] * v.z,
                m[2] * v.x + m[5] * v.y + m[8] * v.z};
    }
    Matrix operator*(const Matrix &other) const;
    double determinant() const;
    Matrix inverse() const; // the determinant must not be 0
    // Whether it only rotates, mirrors and scales all axes alike.
    bool keepsAngles() const;

    bool operator==(const Matrix &) const = default;
};

// Heading, pitch and bank in degrees: bank is applied first (about +Z, +X towards +Y), then pitch (about +X, +Y towards
// +Z: positive looks down), then heading (about +Y, +Z towards +X: positive looks to the right).
Matrix rotationMatrix(const Double3 &headingPitchBank);

// The rotation that turns +Z towards `direction` and keeps +Y as upright as it can. Looking straight up or down, +Y
// turns to -Z or +Z.
Matrix lookAlong(const Vec3 &direction);
// The same, but turns +Y as close to `up` as it can. If `up` is parallel to the direction, it counts as +Y.
Matrix lookAlong(const Vec3 &direction, const Vec3 &up);

// Heading, pitch and bank of a rotation, in degrees: the inverse of rotationMatrix. Looking straight up or down, the
// bank is 0.
Double3 anglesOf(const Matrix &rotation);

// The rotation of a matrix: maps +Z to the direction to which the matrix maps it, and +Y as close as a rotation can to
// the direction to which the matrix maps +Y.
Matrix withoutScale(const Matrix &matrix);

struct Transform {
    Matrix toWorld, toObject;
    Vec3 position; // of the origin of the object's coordinates

    Transform() = default;
    // Moves the pivot to the origin, then scales, rotates and translates. A scale of 0 makes matrices that are not
    // finite; callers check for it.
    explicit Transform(const TransformDescription &description);
    // The same with a rotation matrix instead of the description's rotation.
    Transform(const TransformDescription &description, const Matrix &rotation);

    // Applies `other` first, then this transform: if this is the world transform of a parent and `other` is that of a
    // child relative to it, the product is the world transform of the child.
    Transform operator*(const Transform &other) const;
    bool operator==(const Transform &) const = default;

    Vec3 pointToWorld(const Vec3 &point) const { return toWorld * point + position; }
    Vec3 pointToObject(const Vec3 &point) const { return toObject * (point - position); }
    // Not normalised.
    Vec3 normalToWorld(const Vec3 &normal) const { return toObject.transposedTimes(normal); }
    // Whether it maps different points to different points; false where the scale along an axis is 0.
    bool isInvertible() const { return toWorld.determinant() != 0 && std::isfinite(toObject.determinant()); }
    bool mirrors() const { return toWorld.determinant() < 0; }
};

} // namespace velm::host
