#include "host/bake/chart_edges.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

namespace velm::host {
namespace {

// By vertex, a number that all vertices of the same point of the mesh have.
std::vector<std::uint32_t> pointNumbers(const Mesh &mesh) {
    std::vector<std::uint32_t> numbers(mesh.points.size());
    const std::size_t original = mesh.points.size() - mesh.splitFrom.size();
    if (!mesh.firstOfPoint.empty()) {
        std::copy_n(mesh.firstOfPoint.begin(), original, numbers.begin());
    } else {
        std::vector<std::uint32_t> order(original);
        std::iota(order.begin(), order.end(), 0u);
        const auto key = [&mesh](std::uint32_t vertex) {
            const float *const p = mesh.points[vertex].position;
            return std::tuple(p[0], p[1], p[2], vertex);
        };
        std::ranges::sort(order, {}, key);
        for (std::size_t i = 0; i < original; ++i) {
            const bool isSame = i > 0 && std::equal(mesh.points[order[i]].position, mesh.points[order[i]].position + 3,
                                                    static_cast<const float *>(mesh.points[order[i - 1]].position));
            numbers[order[i]] = isSame ? numbers[order[i - 1]] : order[i];
        }
    }
    for (std::size_t i = 0; i < mesh.splitFrom.size(); ++i) numbers[original + i] = numbers[mesh.splitFrom[i]];
    return numbers;
}

// An edge of a triangle, by the points at its ends, the lower number first.
struct MeshEdge {
    std::uint32_t low, high;
    std::uint32_t triangle;
    std::uint8_t first;
    bool isReversed; // it begins at the higher number
};

bool joins(const MeshEdge &a, const MeshEdge &b) { return a.low == b.low && a.high == b.high; }

class EdgeFinder {
  public:
    EdgeFinder(const TexelMap &map, const std::function<bool(std::uint32_t)> &isWanted) : map_(map) {
        const Mesh &mesh = map.mesh();
        const std::vector<std::uint32_t> numbers = pointNumbers(mesh);
        for (std::uint32_t triangle = 0; triangle < mesh.triangles.size(); ++triangle) {
            const TexelTriangle placed = map.triangleAt({.triangle = triangle, .shiftU = 0, .shiftV = 0});
            const double area = placed.signedArea();
            if (!isWanted(triangle) || !std::isfinite(area) || area == 0) continue;
            for (std::uint8_t k = 0; k < 3; ++k) {
                const std::uint32_t from = numbers[corner(triangle, k)], to = numbers[corner(triangle, k + 1)];
                edges_.push_back({.low = std::min(from, to),
                                  .high = std::max(from, to),
                                  .triangle = triangle,
                                  .first = k,
                                  .isReversed = from > to});
            }
        }
        std::ranges::sort(edges_, {}, [](const MeshEdge &edge) {
            return std::tuple(edge.low, edge.high, edge.triangle, edge.first);
        });
    }

    std::vector<ChartEdge> find() const {
        std::vector<ChartEdge> found;
        for (std::size_t begin = 0, end = 0; begin < edges_.size(); begin = end) {
            while (end < edges_.size() && joins(edges_[begin], edges_[end])) ++end;
            for (std::size_t i = begin; i < end; ++i) addIfChartEdge(i, begin, end, found);
        }
        std::ranges::sort(found, {}, [](const ChartEdge &edge) { return std::tuple(edge.triangle, edge.first); });
        return found;
    }

  private:
    std::uint32_t corner(std::uint32_t triangle, int k) const { return map_.mesh().triangles[triangle].corners[k % 3]; }

    // The vertices of an edge, that with the lower point number first.
    std::pair<std::uint32_t, std::uint32_t> endsOf(const MeshEdge &edge) const {
        const std::uint32_t from = corner(edge.triangle, edge.first), to = corner(edge.triangle, edge.first + 1);
        return edge.isReversed ? std::pair(to, from) : std::pair(from, to);
    }

    bool haveSameUvs(const MeshEdge &a, const MeshEdge &b) const {
        const auto [lowOfA, highOfA] = endsOf(a);
        const auto [lowOfB, highOfB] = endsOf(b);
        const auto &values = map_.map().values;
        return values[lowOfA] == values[lowOfB] && values[highOfA] == values[highOfB];
    }

    // The edges from `begin` to `end` are the same edge of the mesh.
    void addIfChartEdge(std::size_t i, std::size_t begin, std::size_t end, std::vector<ChartEdge> &found) const {
        const MeshEdge &edge = edges_[i];
        const MeshEdge *partner = nullptr;
        for (std::size_t other = begin; other < end; ++other) {
            if (other == i) continue;
            if (haveSameUvs(edge, edges_[other])) return; // the map goes on
            if (!partner) partner = &edges_[other];
        }
        ChartEdge result{.triangle = edge.triangle,
                         .first = edge.first,
                         .partner = ChartEdge::kNone,
                         .partnerFirst = 0,
                         .partnerLast = 0};
        if (partner) {
            const auto next = static_cast<std::uint8_t>((partner->first + 1) % 3);
            const bool isSameSense = partner->isReversed == edge.isReversed;
            result.partner = partner->triangle;
            result.partnerFirst = isSameSense ? partner->first : next;
            result.partnerLast = isSameSense ? next : partner->first;
        }
        found.push_back(result);
    }

    const TexelMap &map_;
    std::vector<MeshEdge> edges_;
};

} // namespace

std::vector<ChartEdge> findChartEdges(const TexelMap &map, const std::function<bool(std::uint32_t)> &isWanted) {
    return EdgeFinder(map, isWanted).find();
}

} // namespace velm::host
