#include "host/bake/texel_geometry.h"

#include <algorithm>
#include <cmath>

namespace velm::host {
namespace {

// Twice the signed area of a triangle.
double crossOf(const TexelPoint &a, const TexelPoint &b, const TexelPoint &c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

TexelPoint between(const TexelPoint &a, const TexelPoint &b, double fraction) {
    return {a.x + fraction * (b.x - a.x), a.y + fraction * (b.y - a.y)};
}

// The part of a polygon where `height`, which is linear, is not negative (Sutherland and Hodgman, "Reentrant Polygon
// Clipping", 1974).
template <class Height>
TexelPolygon clipped(const TexelPolygon &polygon, Height height) {
    TexelPolygon result;
    for (std::size_t i = 0; i < polygon.count; ++i) {
        const TexelPoint &from = polygon.points[i], &to = polygon.points[(i + 1) % polygon.count];
        const double atFrom = height(from), atTo = height(to);
        if (atFrom >= 0) result.points[result.count++] = from;
        if ((atFrom >= 0) != (atTo >= 0)) result.points[result.count++] = between(from, to, atFrom / (atFrom - atTo));
    }
    return result;
}

} // namespace

double TexelTriangle::signedArea() const { return crossOf(corners[0], corners[1], corners[2]) / 2; }

CornerWeights TexelTriangle::weightsAt(const TexelPoint &point) const {
    const double whole = crossOf(corners[0], corners[1], corners[2]);
    const double second = crossOf(corners[0], point, corners[2]) / whole;
    const double third = crossOf(corners[0], corners[1], point) / whole;
    return {1 - second - third, second, third};
}

TexelPoint TexelTriangle::at(const CornerWeights &weights) const {
    TexelPoint point{0, 0};
    for (std::size_t k = 0; k < 3; ++k) {
        point.x += weights[k] * corners[k].x;
        point.y += weights[k] * corners[k].y;
    }
    return point;
}

CornerWeights TexelTriangle::nearestTo(const TexelPoint &point) const {
    CornerWeights nearest{};
    double least = HUGE_VAL;
    for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t next = (k + 1) % 3;
        const NearestOnSegment found = nearestOnSegment(corners[k], corners[next], point);
        if (!(found.squaredDistance < least)) continue;
        least = found.squaredDistance;
        nearest = {};
        nearest[k] = 1 - found.fraction;
        nearest[next] = found.fraction;
    }
    return nearest;
}

CornerWeights clamped(CornerWeights weights) {
    double sum = 0;
    for (double &weight : weights) sum += weight = std::max(0.0, weight);
    for (double &weight : weights) weight /= sum;
    return weights;
}

TexelPolygon clipToTexel(const TexelTriangle &triangle, int x, int y) {
    TexelPolygon polygon;
    for (const TexelPoint &corner : triangle.corners) polygon.points[polygon.count++] = corner;
    polygon = clipped(polygon, [x](const TexelPoint &point) { return point.x - x; });
    polygon = clipped(polygon, [x](const TexelPoint &point) { return x + 1 - point.x; });
    polygon = clipped(polygon, [y](const TexelPoint &point) { return point.y - y; });
    return clipped(polygon, [y](const TexelPoint &point) { return y + 1 - point.y; });
}

double areaOf(const TexelPolygon &polygon) {
    double sum = 0;
    for (std::size_t i = 2; i < polygon.count; ++i)
        sum += crossOf(polygon.points[0], polygon.points[i - 1], polygon.points[i]);
    return std::fabs(sum) / 2;
}

TexelPoint pointIn(const TexelPolygon &polygon, double x, double y) {
    double left = x * areaOf(polygon) * 2;
    for (std::size_t i = 2; i < polygon.count; ++i) {
        const TexelPoint &a = polygon.points[0], &b = polygon.points[i - 1], &c = polygon.points[i];
        const double area = std::fabs(crossOf(a, b, c));
        if (left > area && i + 1 < polygon.count) {
            left -= area;
            continue;
        }
        const double out = std::sqrt(area > 0 ? std::min(1.0, left / area) : 0);
        return between(a, between(b, c, y), out);
    }
    return polygon.points[0];
}

NearestOnSegment nearestOnSegment(const TexelPoint &a, const TexelPoint &b, const TexelPoint &point) {
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double along = square > 0 ? ((point.x - a.x) * dx + (point.y - a.y) * dy) / square : 0;
    const double fraction = std::clamp(along, 0.0, 1.0);
    const double offX = point.x - (a.x + fraction * dx), offY = point.y - (a.y + fraction * dy);
    return {.squaredDistance = offX * offX + offY * offY, .fraction = fraction};
}

} // namespace velm::host
