#include "host/render/tracing/hit.h"

#include "host/render/tracing/ray_functions.h"
#include "host/render/tracing/trace.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace velm::host {
namespace {

// Positions are rounded to 24 bits in the mesh and in the ray, and the intersection adds a few errors of that order.
// All of them are proportional to the coordinates and to the triangle's size.
constexpr double kMarginFactor = 16.0 / 16777216.0;

// The triangle of a hit.
struct Corners {
    Vec3 position[3];
    double weight[3];

    // `motion` is null for a mesh that does not move.
    Corners(const Mesh &mesh, const MeshMotion *motion, double time, const RTCHit &hit) {
        for (int k = 0; k < 3; ++k)
            position[k] = motion ? motion->corner(hit.primID, k, time) : mesh.corner(hit.primID, k);
        weight[1] = static_cast<double>(hit.u);
        weight[2] = static_cast<double>(hit.v);
        weight[0] = 1 - weight[1] - weight[2];
    }
    Vec3 point() const { return weight[0] * position[0] + weight[1] * position[1] + weight[2] * position[2]; }
    Vec3 normal() const { return normalised(cross(position[1] - position[0], position[2] - position[0])); }
    double extent(const Vec3 &point) const {
        return std::max({largest(position[0] - point), largest(position[1] - point), largest(position[2] - point)});
    }
};

Vec3 smoothNormal(const Mesh &mesh, std::uint32_t triangle, const Corners &corners, const Vec3 &flat) {
    Vec3 sum;
    for (int k = 0; k < 3; ++k) {
        const std::array<float, 3> &normal = mesh.normals[mesh.triangles[triangle].corners[k]];
        sum += corners.weight[k] * Vec3{normal[0], normal[1], normal[2]};
    }
    return normalised(sum, flat);
}

void fillPolygon(const Mesh &mesh, std::uint32_t triangle, const Corners &corners, ShadingSample &sample) {
    const HostPolygon &polygon = mesh.triangles[triangle];
    sample.polygonNumber = static_cast<int>(mesh.polygonNumber(triangle));
    // The sample's handles are opaque; nobody writes through them.
    sample.polygon = const_cast<HostPolygon *>(&polygon);
    for (int k = 0; k < 3; ++k) {
        const HostPoint &point = mesh.points[polygon.corners[k]];
        sample.vertices[k] = const_cast<HostPoint *>(&point);
        sample.vertexWeights[k] = static_cast<float>(corners.weight[k]);
        const std::array<float, 3> position = rounded(corners.position[k]);
        std::copy_n(position.begin(), 3, sample.vertexPositions[k]);
    }
    sample.vertices[3] = nullptr;
    sample.vertexWeights[3] = 0;
    std::fill_n(sample.vertexPositions[3], 3, 0.0f);
}

} // namespace

void fillSample(const RayState &state, const RTCRayHit &ray, const IncomingRay &incoming, ShadingSample &sample,
                RayOrigin &origin) {
    const RenderObject &object = state.scene->objects[ray.hit.geomID];
    const Mesh &mesh = *object.mesh;
    const std::uint32_t triangle = ray.hit.primID;
    const RenderSurface &surface = state.scene->surfaceOf(ray.hit.geomID, triangle);
    const double time = static_cast<double>(ray.ray.time);
    const MeshMotion *motion = object.motion.get();
    const Corners corners(mesh, motion, time, ray.hit);
    const Vec3 position = corners.point(), front = corners.normal();
    const Vec3 source{ray.ray.org_x, ray.ray.org_y, ray.ray.org_z};
    const bool back = dot(front, incoming.direction) > 0;
    const bool isSmooth = !mesh.normals.empty() && !surface.flat();
    // A moving object is shaded as it is at the time of the ray.
    std::optional<Transform> moved;
    if (motion) moved = motion->transform(time);
    const Transform &transform = moved ? *moved : object.transform;
    Vec3 smooth = front;
    if (isSmooth) smooth = smoothNormal(mesh, triangle, corners, front);
    if (isSmooth && motion) smooth = motion->turned(smooth, transform);
    // Normals point to the side that the ray came from: a back side is shaded like a front.
    const Vec3 geometric = back ? -front : front, shading = back ? -smooth : smooth;

    sample.pixelX = state.pixelX;
    sample.pixelY = state.pixelY;
    transform.pointToObject(position).store(sample.objectPosition);
    position.store(sample.position);
    geometric.store(sample.geometricNormal);
    shading.store(sample.shadingNormal);
    shading.store(sample.unbumpedNormal);
    source.store(sample.raySource);
    sample.rayLength = length(position - source);
    sample.spotSize = state.origin.spotSize + state.spread * sample.rayLength;
    sample.cosine = -dot(geometric, incoming.direction);
    sample.bumpHeight = 0;
    std::copy_n(transform.toWorld.m, 9, sample.objectToWorld);
    std::copy_n(transform.toObject.m, 9, sample.worldToObject);
    setRayFunctions(sample);
    sample.rayDepth = state.origin.depth + 1;
    sample.sourceItem = const_cast<HostItem *>(state.origin.item);
    sample.objectItem = object.item;
    fillPolygon(mesh, triangle, corners, sample);
    sample.refractionIndex = incoming.refractionIndex;
    sample.threadIndex = state.threadIndex;
    sample.rayFlags = incoming.flags | (back ? kRayBackSide : 0) | (surface.doubleSided ? kRayDoubleSided : 0);

    const auto &numbers = mesh.polygonNumbers;
    const double margin = kMarginFactor * (largest(position) + corners.extent(position));
    constexpr double kNever = std::numeric_limits<double>::quiet_NaN();
    origin = {.position = position,
              .normal = geometric,
              .margin = margin,
              .start = isNear(position) ? position : Vec3{kNever, kNever, kNever},
              .front = rounded(position + margin * geometric),
              .back = rounded(position - margin * geometric),
              .object = ray.hit.geomID,
              .polygon = mesh.polygonNumber(triangle),
              .polygonNumbers = numbers.empty() ? nullptr : numbers.data(),
              .depth = sample.rayDepth,
              .sampled = (incoming.flags & kRaySampled) != 0,
              .refractionIndex = incoming.refractionIndex,
              .spotSize = sample.spotSize,
              .travelled = state.origin.travelled + sample.rayLength,
              .time = state.origin.time,
              .item = object.item};
}

} // namespace velm::host
