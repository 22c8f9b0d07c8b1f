#include "host/bake/texel_source.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

namespace velm::host {
namespace {

constexpr double kOnEdge = 1e-9; // weights of points on an edge may be so far below 0

struct FoundPoint {
    PlacedTriangle placed;
    CornerWeights weights;
};

std::optional<FoundPoint> coveringTriangle(const TexelMap &map, std::span<const TexelFragment> fragments,
                                           const TexelPoint &point) {
    for (const TexelFragment &fragment : fragments) {
        const CornerWeights weights = map.triangleAt(fragment.placed).weightsAt(point);
        if (std::ranges::min(weights) >= -kOnEdge) return FoundPoint{fragment.placed, clamped(weights)};
    }
    return std::nullopt;
}

FoundPoint nearestPoint(const TexelMap &map, std::span<const TexelFragment> fragments, const TexelPoint &point) {
    FoundPoint nearest{};
    double least = HUGE_VAL;
    for (const TexelFragment &fragment : fragments) {
        const TexelTriangle triangle = map.triangleAt(fragment.placed);
        const CornerWeights weights = triangle.nearestTo(point);
        const TexelPoint found = triangle.at(weights);
        const double distance = std::hypot(found.x - point.x, found.y - point.y);
        if (!(distance < least)) continue;
        least = distance;
        nearest = {fragment.placed, weights};
    }
    return nearest;
}

// Maps the unit square to the covered part of a texel, with equal areas where triangles do not overlap.
FoundPoint pointInFragments(const TexelMap &map, std::span<const TexelFragment> fragments, int x, int y,
                            const UnitSquare &random) {
    double sum = 0;
    for (const TexelFragment &fragment : fragments) sum += static_cast<double>(fragment.area);
    double left = random.x * sum;
    const TexelFragment *chosen = &fragments.front();
    for (const TexelFragment &fragment : fragments) {
        chosen = &fragment;
        if (left < static_cast<double>(fragment.area)) break;
        left -= static_cast<double>(fragment.area);
    }
    const TexelTriangle triangle = map.triangleAt(chosen->placed);
    const double within = std::clamp(left / static_cast<double>(chosen->area), 0.0, 1.0);
    return {chosen->placed, clamped(triangle.weightsAt(pointIn(clipToTexel(triangle, x, y), within, random.y)))};
}

// The side of the square of a mesh's surface that is shown in the area of one texel.
double footprintOf(const TexelMap &map, const RenderObject &object, const PlacedTriangle &placed) {
    const auto corner = [&](int k) { return object.corner(placed.triangle, k, 0, object.transform); };
    const Vec3 origin = corner(0);
    const double area = length(cross(corner(1) - origin, corner(2) - origin)) / 2;
    return std::sqrt(area / std::fabs(map.triangleAt(placed).signedArea()));
}

double areaOf(std::span<const TexelFragment> fragments) {
    double sum = 0;
    for (const TexelFragment &fragment : fragments) sum += static_cast<double>(fragment.area);
    return sum;
}

} // namespace

TexelSource::TexelSource(const TexelRaster &raster, std::uint32_t index, const RenderObject &object,
                         const Tangents *tangents, const Transform *toObject, SharedArray<TileFacts> &facts)
    : raster_(raster), index_(index), owner_(object), tangents_(tangents), toObject_(toObject), facts_(facts) {}

void TexelSource::enterTile(int column, int row) {
    constexpr double kOverlap = 1.001; // of a texel; areas are rounded
    column_ = column;
    row_ = row;
    raster_.rasterise(column, row, fragments_);
    TileFacts found{};
    for (std::size_t texel = 0; texel < kTilePixels; ++texel) {
        const std::span<const TexelFragment> fragments = fragments_.of(texel);
        if (fragments.empty()) continue;
        ++found.covered;
        if (areaOf(fragments) < kOverlap || found.overlapped++ > 0) continue;
        const Mesh &mesh = raster_.map().mesh();
        found.polygons[0] = mesh.polygonNumber(fragments.front().placed.triangle);
        for (const TexelFragment &fragment : fragments) {
            found.polygons[1] = mesh.polygonNumber(fragment.placed.triangle);
            if (found.polygons[1] != found.polygons[0]) break; // a polygon has several triangles
        }
    }
    const int columns = (raster_.map().width() + kTileSize - 1) / kTileSize;
    facts_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(column)] =
        found;
}

double TexelSource::find(int x, int y, const UnitSquare &random, bool isOnlySample, SurfacePoint &point) {
    const int column = x / kTileSize, row = y / kTileSize;
    if (column != column_ || row != row_) enterTile(column, row);
    const int texel = (y - row * kTileSize) * kTileSize + (x - column * kTileSize);
    const std::span<const TexelFragment> fragments = fragments_.of(static_cast<std::size_t>(texel));
    if (fragments.empty()) return 0;
    const TexelMap &map = raster_.map();
    const TexelPoint wanted{x + random.x, y + random.y};
    std::optional<FoundPoint> found = coveringTriangle(map, fragments, wanted);
    if (!found)
        found = isOnlySample ? nearestPoint(map, fragments, wanted) : pointInFragments(map, fragments, x, y, random);
    point = {.object = index_,
             .triangle = found->placed.triangle,
             .u = found->weights[1],
             .v = found->weights[2],
             .footprint = footprintOf(map, owner_, found->placed)};
    return std::min(1.0, areaOf(fragments));
}

Vec3 TexelSource::convert(const SurfacePoint &point, const Vec3 &value) const {
    const Vec3 turned = toObject_ ? toObjectSpace(*toObject_, value) : value;
    if (!tangents_) return turned;
    return toTangentSpace(tangents_->at(point.triangle, {1 - point.u - point.v, point.u, point.v}), turned);
}

} // namespace velm::host
