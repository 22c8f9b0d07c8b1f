#include "host/bake/files/mesh_values.h"

#include "host/base/error.h"

#include <algorithm>

namespace velm::host {
namespace {

Vec3 positionOf(const Mesh &mesh, std::uint32_t vertex) {
    const float *p = mesh.points[vertex].position;
    return {p[0], p[1], p[2]};
}

double areaOf(const Mesh &mesh, std::size_t triangle) {
    const auto number = static_cast<std::uint32_t>(triangle);
    const Vec3 here = mesh.corner(number, 0);
    return length(cross(mesh.corner(number, 1) - here, mesh.corner(number, 2) - here)) / 2;
}

} // namespace

PolygonValues::PolygonValues(const Mesh &mesh, const MeshValues &values) : mesh_(mesh), values_(values) {
    firstTriangles_.reserve(mesh.polygonCount + std::size_t{1});
    const std::size_t triangles = mesh.triangles.size();
    for (std::size_t triangle = 0; triangle < triangles; ++triangle)
        while (firstTriangles_.size() <= mesh.polygonNumber(static_cast<std::uint32_t>(triangle)))
            firstTriangles_.push_back(triangle);
    while (firstTriangles_.size() <= mesh.polygonCount) firstTriangles_.push_back(triangles);
}

std::uint32_t PolygonValues::vertexOf(std::size_t corner) const {
    const std::size_t whole = mesh_.points.size() - mesh_.splitFrom.size();
    const std::uint32_t vertex = mesh_.triangles[corner / 3].corners[corner % 3];
    return vertex < whole ? vertex : mesh_.splitFrom[vertex - whole];
}

ValueSum PolygonValues::at(std::size_t polygon, std::uint32_t vertex) const {
    ValueSum sum(values_.size);
    for (std::size_t corner = 3 * begin(polygon); corner < 3 * end(polygon); ++corner)
        if (vertexOf(corner) == vertex && values_.has(corner)) sum.add(values_.at(corner), areaOf(mesh_, corner / 3));
    return sum;
}

ValueSum PolygonValues::at(std::size_t polygon, const Vec3 &position) const {
    const std::optional<std::uint32_t> vertex = vertexAt(polygon, position);
    return vertex ? at(polygon, *vertex) : ValueSum(values_.size);
}

std::optional<std::uint32_t> PolygonValues::vertexAt(std::size_t polygon, const Vec3 &position) const {
    constexpr double kRounding = 1e-5; // of 24 bits, in sums of a few products
    std::optional<std::uint32_t> nearest;
    double least = 0, extent = 0;
    for (std::size_t corner = 3 * begin(polygon); corner < 3 * end(polygon); ++corner) {
        const std::uint32_t vertex = vertexOf(corner);
        const double distance = length(positionOf(mesh_, vertex) - position);
        extent = std::max(extent, distance);
        if (nearest && distance >= least) continue;
        nearest = vertex;
        least = distance;
    }
    return least <= kRounding * (largest(position) + extent) ? nearest : std::nullopt;
}

void failForOtherPolygons(const std::string &file) {
    throw InputError({.file = file}, "its polygons are not those of the mesh that was read from it before; it may have "
                                     "been changed meanwhile");
}

} // namespace velm::host
