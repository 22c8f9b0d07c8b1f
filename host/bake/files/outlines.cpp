#include "host/bake/files/outlines.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace velm::host {
namespace {

using Outline = std::vector<std::uint32_t>;
using Edge = std::pair<std::uint32_t, std::uint32_t>; // from one vertex to the next

Outline triangleAt(const PolygonValues &polygons, std::size_t triangle) {
    return {polygons.vertexOf(3 * triangle), polygons.vertexOf(3 * triangle + 1), polygons.vertexOf(3 * triangle + 2)};
}

// The edges that only one triangle has, sorted.
std::vector<Edge> borderOf(const PolygonValues &polygons, std::size_t polygon) {
    std::vector<Edge> edges;
    for (std::size_t triangle = polygons.begin(polygon); triangle < polygons.end(polygon); ++triangle) {
        const Outline corners = triangleAt(polygons, triangle);
        for (std::size_t k = 0; k < 3; ++k) edges.emplace_back(corners[k], corners[(k + 1) % 3]);
    }
    std::ranges::sort(edges);
    std::vector<Edge> border;
    for (const Edge &edge : edges)
        if (!std::ranges::binary_search(edges, Edge(edge.second, edge.first))) border.push_back(edge);
    return border;
}

// The vertices along the border, from that of the first corner on; nothing if it is not one loop.
std::optional<Outline> loopOf(const std::vector<Edge> &border, std::uint32_t first) {
    Outline loop;
    std::uint32_t vertex = first;
    do {
        const auto found = std::ranges::lower_bound(border, Edge(vertex, 0));
        if (found == border.end() || found->first != vertex || loop.size() == border.size()) return std::nullopt;
        loop.push_back(vertex);
        vertex = found->second;
    } while (vertex != first);
    if (loop.size() != border.size()) return std::nullopt;
    return loop;
}

} // namespace

void addOutlines(const PolygonValues &polygons, std::size_t polygon, std::vector<Outline> &outlines) {
    const std::size_t begin = polygons.begin(polygon), end = polygons.end(polygon);
    if (begin == end) return;
    if (end - begin > 1)
        if (const auto loop = loopOf(borderOf(polygons, polygon), polygons.vertexOf(3 * begin))) {
            outlines.push_back(*loop);
            return;
        }
    for (std::size_t triangle = begin; triangle < end; ++triangle) outlines.push_back(triangleAt(polygons, triangle));
}

} // namespace velm::host
