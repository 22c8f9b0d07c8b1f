#include "host/bake/normal_space.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <tuple>

namespace velm::host {
namespace {

Vec3 inPlane(const Vec3 &vector, const Vec3 &normal) {
    return normalised(vector - dot(vector, normal) * normal, {0, 0, 0});
}

Vec3 asVec3(const std::array<float, 3> &vector) { return {vector[0], vector[1], vector[2]}; }

} // namespace

Tangents::Tangents(const Mesh &mesh, const UvMap &map, const std::vector<bool> &isFlat)
    : mesh_(mesh), map_(map), isFlat_(isFlat), tangents_(mesh.triangles.size()), mirrored_(mesh.triangles.size()) {
    addTangents();
}

Tangents::Directions Tangents::directionsOf(std::uint32_t triangle) const {
    const std::uint32_t *const corners = mesh_.triangles[triangle].corners;
    const auto uvOf = [&](int k) { return map_.values[corners[k]]; };
    const auto uvEdge = [&](int k) {
        return std::array{static_cast<double>(uvOf(k)[0]) - static_cast<double>(uvOf(0)[0]),
                          static_cast<double>(uvOf(k)[1]) - static_cast<double>(uvOf(0)[1])};
    };
    const auto first = uvEdge(1), second = uvEdge(2);
    const Vec3 origin = mesh_.corner(triangle, 0);
    const Vec3 toFirst = mesh_.corner(triangle, 1) - origin, toSecond = mesh_.corner(triangle, 2) - origin;
    const double area = first[0] * second[1] - first[1] * second[0];
    if (area == 0 || !std::isfinite(area)) return {};
    const double sign = area > 0 ? 1 : -1;
    const Vec3 none{0, 0, 0};
    return {.alongU = normalised(sign * (second[1] * toFirst - first[1] * toSecond), none),
            .alongV = normalised(sign * (first[0] * toSecond - second[0] * toFirst), none)};
}

Vec3 Tangents::normalAt(std::uint32_t triangle, int corner) const {
    if (isFlat_[triangle] || mesh_.normals.empty()) {
        const Vec3 origin = mesh_.corner(triangle, 0);
        return normalised(cross(mesh_.corner(triangle, 1) - origin, mesh_.corner(triangle, 2) - origin));
    }
    return asVec3(mesh_.normals[mesh_.triangles[triangle].corners[corner]]);
}

// The angle of a triangle at a corner, seen along the normal there.
double Tangents::angleAt(std::uint32_t triangle, int corner, const Vec3 &normal) const {
    const Vec3 position = mesh_.corner(triangle, corner);
    const Vec3 toNext = inPlane(mesh_.corner(triangle, (corner + 1) % 3) - position, normal);
    const Vec3 toLast = inPlane(mesh_.corner(triangle, (corner + 2) % 3) - position, normal);
    return std::acos(std::clamp(dot(toNext, toLast), -1.0, 1.0));
}

// Whether v grows against the cross product of the normal and the direction of growing u.
bool Tangents::mirrors(std::uint32_t triangle, const Directions &directions) const {
    const Vec3 origin = mesh_.corner(triangle, 0);
    const Vec3 normal = cross(mesh_.corner(triangle, 1) - origin, mesh_.corner(triangle, 2) - origin);
    return dot(cross(normal, directions.alongU), directions.alongV) < 0;
}

void Tangents::addTangents() {
    // Corners with the same position, normal and UV coordinates, of triangles that are mirrored alike, share a tangent.
    using Key = std::tuple<std::array<float, 3>, std::array<float, 3>, std::array<float, 2>, bool>;
    std::map<Key, Vec3> sums;
    std::vector<std::array<Vec3 *, 3>> shared(tangents_.size());
    const auto count = static_cast<std::uint32_t>(tangents_.size());
    for (std::uint32_t triangle = 0; triangle < count; ++triangle) {
        const Directions directions = directionsOf(triangle);
        mirrored_[triangle] = mirrors(triangle, directions);
        for (int k = 0; k < 3; ++k) {
            const Vec3 normal = normalAt(triangle, k);
            const Vec3 tangent = inPlane(directions.alongU, normal);
            const auto corner = static_cast<std::size_t>(k);
            if (isFlat_[triangle] || mesh_.normals.empty()) {
                tangents_[triangle][corner] = {static_cast<float>(tangent.x), static_cast<float>(tangent.y),
                                               static_cast<float>(tangent.z)};
                continue;
            }
            const std::uint32_t vertex = mesh_.triangles[triangle].corners[k];
            const float *const position = mesh_.points[vertex].position;
            Vec3 &sum = sums[{{position[0], position[1], position[2]},
                              mesh_.normals[vertex],
                              map_.values[vertex],
                              mirrored_[triangle]}];
            sum += angleAt(triangle, k, normal) * tangent;
            shared[triangle][corner] = &sum;
        }
    }
    for (std::uint32_t triangle = 0; triangle < count; ++triangle) {
        for (std::size_t k = 0; k < 3; ++k) {
            if (!shared[triangle][k]) continue;
            const Vec3 tangent = normalised(*shared[triangle][k], {1, 0, 0});
            tangents_[triangle][k] = {static_cast<float>(tangent.x), static_cast<float>(tangent.y),
                                      static_cast<float>(tangent.z)};
        }
    }
}

Tangents::Frame Tangents::at(std::uint32_t triangle, const std::array<double, 3> &weights) const {
    Frame frame;
    for (std::size_t k = 0; k < 3; ++k) {
        frame.tangent += weights[k] * asVec3(tangents_[triangle][k]);
        frame.normal += weights[k] * normalAt(triangle, static_cast<int>(k));
    }
    frame.bitangent = (mirrored_[triangle] ? -1.0 : 1.0) * cross(frame.normal, frame.tangent);
    return frame;
}

Vec3 toObjectSpace(const Transform &transform, const Vec3 &normal) {
    return normalised(transform.toWorld.transposedTimes(normal));
}

Vec3 toTangentSpace(const Tangents::Frame &frame, const Vec3 &normal) {
    // Cramer's rule for x tangent + y bitangent + z normal.
    const Vec3 &t = frame.tangent, &b = frame.bitangent, &n = frame.normal;
    const double determinant = dot(t, cross(b, n));
    const double sign = determinant < 0 ? -1 : 1;
    const Vec3 weights{dot(normal, cross(b, n)), dot(normal, cross(n, t)), dot(normal, cross(t, b))};
    return normalised(sign * weights);
}

} // namespace velm::host
