#include "host/bake/texel_raster.h"

#include "host/base/error.h"
#include "host/base/region.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <numeric>

namespace velm::host {
namespace {

constexpr double kLeastArea = 1e-6; // of a texel that counts as covered
constexpr double kSlack = 1e-6;     // of the map: coordinates are rounded, and 1 may have become a little more

struct TexelBounds {
    TexelPoint low, high;
};

TexelBounds boundsOf(const TexelTriangle &triangle) {
    const auto &[a, b, c] = triangle.corners;
    return {.low = {std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})},
            .high = {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})}};
}

bool isFinite(const TexelTriangle &triangle) {
    return std::ranges::all_of(
        triangle.corners, [](const TexelPoint &point) { return std::isfinite(point.x) && std::isfinite(point.y); });
}

// The texels that an interval touches, within `low` to `high` - 1.
struct TexelRange {
    int begin, end;
};
TexelRange texelsOf(double from, double to, int low, int high) {
    const auto inside = [&](double at) { return static_cast<int>(std::clamp<double>(at, low, high)); };
    return {.begin = inside(std::floor(from)), .end = inside(std::ceil(to))};
}

// A linear function that is positive on the inner side of an edge of a triangle.
struct EdgeFunction {
    double a, b, c;

    EdgeFunction(const TexelPoint &from, const TexelPoint &to, double sign)
        : a(sign * (from.y - to.y)), b(sign * (to.x - from.x)), c(-a * from.x - b * from.y) {}
    // Of the points of a texel.
    double least(int x, int y) const { return a * x + b * y + c + std::min(a, 0.0) + std::min(b, 0.0); }
    double greatest(int x, int y) const { return a * x + b * y + c + std::max(a, 0.0) + std::max(b, 0.0); }
};

} // namespace

TexelTriangle TexelMap::triangleAt(const PlacedTriangle &placed) const {
    const HostPolygon &triangle = mesh_.triangles[placed.triangle];
    TexelTriangle result{};
    for (std::size_t k = 0; k < 3; ++k) result.corners[k] = texelOf(triangle.corners[k], placed.shiftU, placed.shiftV);
    return result;
}

void TileFragments::sort() {
    first_.fill(0);
    for (const Found &each : found_) ++first_[each.texel + 1];
    std::partial_sum(first_.begin(), first_.end(), first_.begin());
    fragments_.resize(found_.size());
    std::array<std::uint32_t, kTilePixels> next;
    std::copy_n(first_.begin(), kTilePixels, next.begin());
    for (const Found &each : found_) fragments_[next[each.texel]++] = each.fragment;
}

TexelRaster::TexelRaster(const TexelMap &map, const std::function<bool(std::uint32_t)> &isWanted)
    : map_(map), columns_((map.width() + kTileSize - 1) / kTileSize), rows_((map.height() + kTileSize - 1) / kTileSize),
      starts_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_) + 1) {
    const auto count = static_cast<std::uint32_t>(map.mesh().triangles.size());
    std::vector<bool> isUsed(count);
    for (std::uint32_t triangle = 0; triangle < count; ++triangle) {
        if (!isWanted(triangle) || !examine(triangle)) continue;
        isUsed[triangle] = true;
        forPlaces(triangle, [&](const PlacedTriangle &placed) {
            forTiles(placed, [&](std::size_t tile) { ++starts_[tile + 1]; });
        });
    }
    std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
    triangles_.resize(starts_.back());
    std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
    for (std::uint32_t triangle = 0; triangle < count; ++triangle) {
        if (!isUsed[triangle]) continue;
        forPlaces(triangle, [&](const PlacedTriangle &placed) {
            forTiles(placed, [&](std::size_t tile) { triangles_[next[tile]++] = placed; });
        });
    }
}

// Counts what is the matter with a triangle. False if it cannot be in the raster.
bool TexelRaster::examine(std::uint32_t triangle) {
    const std::uint32_t polygon = map_.mesh().polygonNumber(triangle);
    const TexelTriangle corners = map_.triangleAt({.triangle = triangle, .shiftU = 0, .shiftV = 0});
    if (!isFinite(corners)) {
        missing_.add(polygon);
        return false;
    }
    const double area = corners.signedArea();
    if (area == 0) {
        flat_.add(polygon);
        return false;
    }
    const auto &[low, high] = boundsOf(corners);
    if (high.x - low.x > double{kMostRepeats} * map_.width() || high.y - low.y > double{kMostRepeats} * map_.height() ||
        std::max({std::fabs(low.x), std::fabs(high.x)}) > 30000.0 * map_.width() ||
        std::max({std::fabs(low.y), std::fabs(high.y)}) > 30000.0 * map_.height())
        throw InputError(
            fmt::format("the UV coordinates of polygon {} repeat the map \"{}\" more than {} times, or are "
                        "farther than 30000 from it",
                        polygon, map_.map().name, kMostRepeats));
    if (area < 0) mirrored_.add(polygon);
    if (low.x < -kSlack * map_.width() || low.y < -kSlack * map_.height() || high.x > (1 + kSlack) * map_.width() ||
        high.y > (1 + kSlack) * map_.height())
        repeated_.add(polygon);
    return true;
}

// Calls `take` with each place at which a triangle may touch the picture.
template <class Take>
void TexelRaster::forPlaces(std::uint32_t triangle, Take take) const {
    const auto &[low, high] = boundsOf(map_.triangleAt({.triangle = triangle, .shiftU = 0, .shiftV = 0}));
    const double width = map_.width(), height = map_.height();
    // A picture shows u from 0 to 1, and y grows as v falls.
    const auto firstU = static_cast<std::int16_t>(std::floor(low.x / width)),
               lastU = static_cast<std::int16_t>(std::ceil(high.x / width) - 1),
               firstV = static_cast<std::int16_t>(std::floor(1 - high.y / height)),
               lastV = static_cast<std::int16_t>(std::ceil(1 - low.y / height) - 1);
    for (std::int16_t v = firstV; v <= lastV; ++v)
        for (std::int16_t u = firstU; u <= lastU; ++u) take({.triangle = triangle, .shiftU = u, .shiftV = v});
}

template <class Take>
void TexelRaster::forTiles(const PlacedTriangle &placed, Take take) const {
    const auto &[low, high] = boundsOf(map_.triangleAt(placed));
    const TexelRange x = texelsOf(low.x, high.x, 0, map_.width()), y = texelsOf(low.y, high.y, 0, map_.height());
    if (x.begin >= x.end || y.begin >= y.end) return;
    for (int row = y.begin / kTileSize; row <= (y.end - 1) / kTileSize; ++row)
        for (int column = x.begin / kTileSize; column <= (x.end - 1) / kTileSize; ++column)
            take(static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column));
}

void TexelRaster::rasterise(int column, int row, TileFragments &fragments) const {
    fragments.found_.clear();
    const Region tile = {.left = column * kTileSize,
                         .top = row * kTileSize,
                         .right = std::min((column + 1) * kTileSize, map_.width()),
                         .bottom = std::min((row + 1) * kTileSize, map_.height())};
    const std::size_t number =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column);
    for (std::size_t i = starts_[number]; i < starts_[number + 1]; ++i)
        rasteriseTriangle(triangles_[i], tile, fragments);
    fragments.sort();
}

void TexelRaster::rasteriseTriangle(const PlacedTriangle &placed, const Region &tile, TileFragments &fragments) const {
    const TexelTriangle triangle = map_.triangleAt(placed);
    const auto &[a, b, c] = triangle.corners;
    const double sign = triangle.signedArea() > 0 ? 1 : -1;
    const EdgeFunction edges[] = {{a, b, sign}, {b, c, sign}, {c, a, sign}};
    const auto &[low, high] = boundsOf(triangle);
    const TexelRange columns = texelsOf(low.x, high.x, tile.left, tile.right);
    const TexelRange rows = texelsOf(low.y, high.y, tile.top, tile.bottom);
    for (int y = rows.begin; y < rows.end; ++y) {
        for (int x = columns.begin; x < columns.end; ++x) {
            if (std::ranges::any_of(edges, [&](const EdgeFunction &edge) { return edge.greatest(x, y) <= 0; }))
                continue;
            const bool isWhole =
                std::ranges::all_of(edges, [&](const EdgeFunction &edge) { return edge.least(x, y) >= 0; });
            const double area = isWhole ? 1 : areaOf(clipToTexel(triangle, x, y));
            if (area < kLeastArea) continue;
            const auto texel = static_cast<std::uint32_t>((y - tile.top) * kTileSize + (x - tile.left));
            fragments.found_.push_back(
                {.texel = texel, .fragment = {.placed = placed, .area = static_cast<float>(area)}});
        }
    }
}

} // namespace velm::host
