#include "host/bake/margin.h"

#include "host/bake/chart_edges.h"
#include "host/base/region.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

namespace velm::host {
namespace {

// An edge of the map in texels, at one of the places at which the map shows it.
struct PlacedEdge {
    TexelPoint from, to;
    std::uint32_t edge; // an index of the chart edges
};

// Maps points beyond an edge to the part of the map that has the same edge of the mesh, so that the edge stays itself
// and distances keep their ratio to its length.
struct SeamMapping {
    bool exists = false;
    TexelPoint from, along; // of the edge in the other part
    TexelPoint inward;      // unit length
    double length = 0;      // of the edge there
};

using Colour = std::array<float, 3>;

class MarginFiller {
  public:
    MarginFiller(Picture &picture, const TexelMap &map, const std::function<bool(std::uint32_t)> &isWanted, int margin)
        : picture_(picture), map_(map), margin_(margin), columns_((map.width() + kTileSize - 1) / kTileSize),
          rows_((map.height() + kTileSize - 1) / kTileSize), edges_(findChartEdges(map, isWanted)),
          byTile_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_)) {
        for (std::uint32_t i = 0; i < edges_.size(); ++i) placeEdge(i);
    }

    void fill() {
        for (int row = 0; row < rows_; ++row)
            for (int column = 0; column < columns_; ++column) fillTile(column, row);
    }

  private:
    // Texels whose nearest edge is known.
    struct Nearest {
        double squaredDistance = HUGE_VAL;
        const PlacedEdge *edge = nullptr;
        double fraction = 0;
    };

    TexelPoint cornerOf(std::uint32_t triangle, int corner) const {
        return map_.texelOf(map_.mesh().triangles[triangle].corners[corner % 3]);
    }

    // Puts an edge into the lists of the tiles that are near it, wherever the repeated map shows it.
    void placeEdge(std::uint32_t index) {
        const ChartEdge &edge = edges_[index];
        const TexelPoint from = cornerOf(edge.triangle, edge.first), to = cornerOf(edge.triangle, edge.first + 1);
        const auto shifts = [margin = margin_](double a, double b, int size) {
            return std::pair(static_cast<int>(std::floor((std::min(a, b) - margin) / size)),
                             static_cast<int>(std::floor((std::max(a, b) + margin) / size)));
        };
        const auto [firstX, lastX] = shifts(from.x, to.x, map_.width());
        const auto [firstY, lastY] = shifts(from.y, to.y, map_.height());
        for (int y = firstY; y <= lastY; ++y) {
            for (int x = firstX; x <= lastX; ++x) {
                const double offX = 1.0 * x * map_.width(), offY = 1.0 * y * map_.height();
                addToTiles({.from = {from.x - offX, from.y - offY}, .to = {to.x - offX, to.y - offY}, .edge = index});
            }
        }
    }

    void addToTiles(const PlacedEdge &edge) {
        const auto tiles = [this](double a, double b, int count) {
            const auto tileOf = [&](double at) {
                return static_cast<int>(std::clamp(std::floor(at / kTileSize), -1.0, static_cast<double>(count)));
            };
            return std::pair(std::max(0, tileOf(std::min(a, b) - margin_)),
                             std::min(count - 1, tileOf(std::max(a, b) + margin_)));
        };
        const auto [firstColumn, lastColumn] = tiles(edge.from.x, edge.to.x, columns_);
        const auto [firstRow, lastRow] = tiles(edge.from.y, edge.to.y, rows_);
        const double reach = margin_ + kTileSize * std::numbers::sqrt2 / 2;
        for (int row = firstRow; row <= lastRow; ++row) {
            for (int column = firstColumn; column <= lastColumn; ++column) {
                const TexelPoint middle{(column + 0.5) * kTileSize, (row + 0.5) * kTileSize};
                if (nearestOnSegment(edge.from, edge.to, middle).squaredDistance > reach * reach) continue;
                byTile_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
                        static_cast<std::size_t>(column)]
                    .push_back(edge);
            }
        }
    }

    bool isCovered(int x, int y) const { return picture_.pixel(x, y)[3] > 0; }

    void fillTile(int column, int row) {
        const auto &placed = byTile_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
                                     static_cast<std::size_t>(column)];
        if (placed.empty()) return;
        const int right = std::min((column + 1) * kTileSize, map_.width());
        const int bottom = std::min((row + 1) * kTileSize, map_.height());
        for (int y = row * kTileSize; y < bottom; ++y) {
            for (int x = column * kTileSize; x < right; ++x) {
                if (isCovered(x, y)) continue;
                const TexelPoint middle{x + 0.5, y + 0.5};
                Nearest nearest;
                for (const PlacedEdge &edge : placed) {
                    const NearestOnSegment found = nearestOnSegment(edge.from, edge.to, middle);
                    if (found.squaredDistance < nearest.squaredDistance)
                        nearest = {found.squaredDistance, &edge, found.fraction};
                }
                if (nearest.squaredDistance > 1.0 * margin_ * margin_) continue;
                Colour colour;
                if (overSeam(middle, nearest, colour) || nearestColour(middle, nearest, colour))
                    std::ranges::copy(colour, picture_.pixel(x, y));
            }
        }
    }

    SeamMapping mappingOf(const ChartEdge &edge) const {
        if (edge.partner == ChartEdge::kNone) return {};
        const TexelPoint from = cornerOf(edge.partner, edge.partnerFirst);
        const TexelPoint to = cornerOf(edge.partner, edge.partnerLast);
        const TexelPoint inside = cornerOf(edge.partner, 3 - edge.partnerFirst - edge.partnerLast);
        const TexelPoint along{to.x - from.x, to.y - from.y};
        const double size = std::hypot(along.x, along.y);
        if (!(size > 0)) return {};
        const double side = along.x * (inside.y - from.y) - along.y * (inside.x - from.x) > 0 ? 1 / size : -1 / size;
        return {
            .exists = true, .from = from, .along = along, .inward = {-side * along.y, side * along.x}, .length = size};
    }

    // The colour on the other side of a seam; false where there is none.
    bool overSeam(const TexelPoint &point, const Nearest &nearest, Colour &colour) const {
        const SeamMapping mapping = mappingOf(edges_[nearest.edge->edge]);
        if (!mapping.exists) return false;
        const TexelPoint &from = nearest.edge->from, &to = nearest.edge->to;
        const double dx = to.x - from.x, dy = to.y - from.y, square = dx * dx + dy * dy;
        if (!(square > 0)) return false;
        const double along = ((point.x - from.x) * dx + (point.y - from.y) * dy) / square;
        const double across = std::fabs((point.x - from.x) * dy - (point.y - from.y) * dx) / square * mapping.length;
        return interpolated({mapping.from.x + along * mapping.along.x + across * mapping.inward.x,
                             mapping.from.y + along * mapping.along.y + across * mapping.inward.y},
                            colour);
    }

    // The colour at a point between covered texels, bilinear among those of the four around it that are covered. False
    // if none is.
    bool interpolated(const TexelPoint &point, Colour &colour) const {
        const double left = std::floor(point.x - 0.5), top = std::floor(point.y - 0.5);
        const double fractionX = point.x - 0.5 - left, fractionY = point.y - 0.5 - top;
        double sum[3] = {0, 0, 0}, weights = 0;
        for (int i = 0; i < 4; ++i) {
            const bool isRight = (i & 1) != 0, isLower = (i & 2) != 0;
            const int x = wrapped(left + (isRight ? 1 : 0), map_.width());
            const int y = wrapped(top + (isLower ? 1 : 0), map_.height());
            if (!isCovered(x, y)) continue;
            const double weight = (isRight ? fractionX : 1 - fractionX) * (isLower ? fractionY : 1 - fractionY);
            const float *const pixel = std::as_const(picture_).pixel(x, y);
            for (int k = 0; k < 3; ++k) sum[k] += weight * static_cast<double>(pixel[k]);
            weights += weight;
        }
        if (!(weights > 0)) return false;
        for (std::size_t k = 0; k < 3; ++k) colour[k] = static_cast<float>(sum[k] / weights);
        return true;
    }

    static int wrapped(double at, int size) { return static_cast<int>(at - std::floor(at / size) * size); }

    // The colour of the covered texel nearest to a point, of those at the nearest point of the edge.
    bool nearestColour(const TexelPoint &point, const Nearest &nearest, Colour &colour) const {
        const TexelPoint &from = nearest.edge->from, &to = nearest.edge->to;
        const int x = static_cast<int>(std::floor(from.x + nearest.fraction * (to.x - from.x)));
        const int y = static_cast<int>(std::floor(from.y + nearest.fraction * (to.y - from.y)));
        double least = HUGE_VAL;
        for (int row = std::max(0, y - 1); row <= std::min(map_.height() - 1, y + 1); ++row) {
            for (int column = std::max(0, x - 1); column <= std::min(map_.width() - 1, x + 1); ++column) {
                const double distance = std::hypot(column + 0.5 - point.x, row + 0.5 - point.y);
                if (!isCovered(column, row) || !(distance < least)) continue;
                least = distance;
                std::copy_n(std::as_const(picture_).pixel(column, row), 3, colour.begin());
            }
        }
        return least < HUGE_VAL;
    }

    Picture &picture_;
    const TexelMap &map_;
    const int margin_, columns_, rows_;
    const std::vector<ChartEdge> edges_;
    std::vector<std::vector<PlacedEdge>> byTile_;
};

} // namespace

void fillMargin(Picture &picture, const TexelMap &map, const std::function<bool(std::uint32_t)> &isWanted, int margin) {
    if (margin > 0) MarginFiller(picture, map, isWanted, margin).fill();
}

} // namespace velm::host
