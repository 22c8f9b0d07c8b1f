// The geometry of one object, in world space and ready to be handed to the ray acceleration, which reads these very
// buffers.
#pragma once

#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"
#include "module/host.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A vertex. The opaque handle of the wall.
struct HostPoint {
    float position[3];
};

// A triangle: numbers of three vertices. Seen from its front, in left-handed axes, they run clockwise, so that the
// cross product of its first two edges points out of the front. The opaque handle of the wall.
struct HostPolygon {
    std::uint32_t corners[3];
};

namespace velm::host {

struct UvMap {
    std::string name;
    std::vector<std::array<float, 2>> values; // by vertex; not a number where the map does not reach
};

struct Mesh {
    std::vector<HostPoint> points;
    std::vector<HostPolygon> triangles;
    std::vector<std::array<float, 3>> normals; // by vertex; empty: flat
    std::vector<UvMap> uvMaps;
    std::vector<std::uint32_t> polygonNumbers;  // by triangle; empty: every triangle is a polygon of its own
    std::vector<std::uint16_t> materialNumbers; // by triangle; empty: all are of the first material
    std::vector<std::string> materials;
    std::uint32_t polygonCount = 0; // before they were cut into triangles

    std::uint32_t polygonNumber(std::uint32_t triangle) const {
        return polygonNumbers.empty() ? triangle : polygonNumbers[triangle];
    }
    std::uint16_t materialNumber(std::uint32_t triangle) const {
        return materialNumbers.empty() ? std::uint16_t{0} : materialNumbers[triangle];
    }
    Vec3 corner(std::uint32_t triangle, int which) const {
        const float *p = points[triangles[triangle].corners[which]].position;
        return {p[0], p[1], p[2]};
    }
};

// Reads a mesh file of any format that assimp knows, and places it. Files count as right-handed with +Y up and are
// mirrored in Z. Polygons of any number of corners become triangles; those without an area are dropped; lines and
// points are left out. Materials that no polygon has are left out. Throws InputError with the file's name for a file
// that is missing, broken or without polygons.
Mesh readMesh(const std::string &file, const Transform &transform);

// The plane, box and sphere. One material without a name, and a map "UV": on the plane u runs to +X and v to +Z; on
// each side of the box and on the sphere u runs to the right and v up, as seen from outside, the sphere's middle at -Z.
// Throws InputError (without a place) for sizes that are not above 0, and fewer than 3 segments.
Mesh shapeMesh(const PlaneShape &shape, const Transform &transform);
Mesh shapeMesh(const BoxShape &shape, const Transform &transform);
Mesh shapeMesh(const SphereShape &shape, const Transform &transform);
inline Mesh shapeMesh(const MeshFile &shape, const Transform &transform) { return readMesh(shape.file, transform); }

// The mesh of any shape: each alternative of ShapeDescription has its overload of shapeMesh.
Mesh makeMesh(const ShapeDescription &shape, const Transform &transform);

// Computes the normals of a mesh that has none: at a corner, the mean of the normals of the triangles about it that
// have the same material and are inclined against the corner's own triangle by no more than the material's smoothing
// angle, weighted by their angles at the corner (Thürmer and Wüthrich, "Computing Vertex Normals from Polygonal
// Facets", 1998). Vertices whose corners differ are split. `smoothingAngles` are degrees, by material; corners of
// materials with 0 may get any normal. Vertices count as one for this where their positions are equal.
void smoothNormals(Mesh &mesh, const std::vector<double> &smoothingAngles);

} // namespace velm::host
