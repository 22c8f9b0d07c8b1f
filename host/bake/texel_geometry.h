// Plane geometry in texels: x to the right, y down, from the upper left corner of a picture. Texel (0, 0) is the square
// from (0, 0) to (1, 1).
#pragma once

#include <array>
#include <cstddef>

namespace velm::host {

struct TexelPoint {
    double x, y;
};

// The part of a triangle that is in a texel: at most the triangle's corners and those of the texel.
struct TexelPolygon {
    std::array<TexelPoint, 7> points;
    std::size_t count = 0;
};

// Weights of the corners of a triangle: 1 in sum.
using CornerWeights = std::array<double, 3>;

struct TexelTriangle {
    std::array<TexelPoint, 3> corners;

    // Positive if the corners run clockwise as the picture shows them.
    double signedArea() const;
    // The weights of a point in the triangle's plane; some are negative for a point outside the triangle. The area must
    // not be 0.
    CornerWeights weightsAt(const TexelPoint &point) const;
    TexelPoint at(const CornerWeights &weights) const;
    // The weights of the point of the triangle that is nearest to a point outside it.
    CornerWeights nearestTo(const TexelPoint &point) const;
};

// The weights with the negative ones set to 0, and 1 in sum again.
CornerWeights clamped(CornerWeights weights);

// The part of a triangle that is in the texel (x, y); empty if there is none.
TexelPolygon clipToTexel(const TexelTriangle &triangle, int x, int y);

// The area of a convex polygon.
double areaOf(const TexelPolygon &polygon);

// Maps the unit square to a convex polygon with equal areas.
TexelPoint pointIn(const TexelPolygon &polygon, double x, double y);

// The distance of a point from a segment, and the fraction of the way from `a` to `b` at which it is nearest.
struct NearestOnSegment {
    double squaredDistance, fraction;
};
NearestOnSegment nearestOnSegment(const TexelPoint &a, const TexelPoint &b, const TexelPoint &point);

} // namespace velm::host
