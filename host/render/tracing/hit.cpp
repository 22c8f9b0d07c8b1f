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

    // `now` is the transform of the object at that time.
    Corners(const RenderObject &object, double time, const Transform &now, const RTCHit &hit) {
        for (int k = 0; k < 3; ++k) position[k] = object.corner(hit.primID, k, time, now);
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

// The mean of the normals at the corners when the shutter opens, turned to the time of the transform `now`.
Vec3 smoothNormal(const RenderObject &object, std::uint32_t triangle, const Corners &corners, const Transform &now,
                  const Vec3 &flat) {
    const Mesh &mesh = *object.mesh;
    const Transform &first = object.transform;
    Vec3 sum;
    for (int k = 0; k < 3; ++k) {
        const std::array<float, 3> &stored = mesh.normals[mesh.triangles[triangle].corners[k]];
        const Vec3 normal{stored[0], stored[1], stored[2]};
        sum += corners.weight[k] * (object.isInstance ? normalised(first.normalToWorld(normal), {0, 0, 0}) : normal);
    }
    const Vec3 mean = normalised(sum, flat);
    if (object.path.empty()) return mean;
    if (object.motion) return object.motion->turned(mean, now);
    return normalised(now.normalToWorld(first.toWorld.transposedTimes(mean)), mean);
}

// The largest sum of the absolute values of a row: a bound on how much the matrix makes coordinates larger.
double rowNorm(const Matrix &matrix) {
    double norm = 0;
    for (std::size_t row = 0; row < 9; row += 3)
        norm = std::max(norm, std::fabs(matrix.m[row]) + std::fabs(matrix.m[row + 1]) + std::fabs(matrix.m[row + 2]));
    return norm;
}

// A bound on the rounding errors of positions about a hit; see spawnRay. Rays are transformed to the coordinates of an
// instance in single precision, and its transform magnifies the errors of that.
double marginOf(const RenderObject &object, const Transform &now, const Corners &corners, const Vec3 &position) {
    double size = largest(position) + corners.extent(position);
    if (object.isInstance) {
        const double scale = rowNorm(now.toWorld);
        size += scale * rowNorm(now.toObject) * (largest(position) + largest(now.position)) +
                scale * largest(now.pointToObject(position));
    }
    return kMarginFactor * size;
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
    // A moving object is shaded as it is at the time of the ray.
    std::optional<Transform> moved;
    if (!object.path.empty()) moved = transformAt(object.path, time);
    const Transform &transform = moved ? *moved : object.transform;
    const Corners corners(object, time, transform, ray.hit);
    const Vec3 position = corners.point();
    // The triangles of an instance keep the order of their corners when it is mirrored.
    const Vec3 front = object.isInstance && transform.mirrors() ? -corners.normal() : corners.normal();
    const Vec3 source{ray.ray.org_x, ray.ray.org_y, ray.ray.org_z};
    const bool back = dot(front, incoming.direction) > 0;
    const bool isSmooth = !mesh.normals.empty() && !surface.flat();
    Vec3 smooth = front;
    if (isSmooth) smooth = smoothNormal(object, triangle, corners, transform, front);
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
    const double margin = marginOf(object, transform, corners, position);
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
