// The geometry of one object, in world space. Embree reads its buffers directly.
#pragma once

#include "host/base/limits.h"
#include "host/object/mesh_material.h"
#include "host/render/geometry/mesh_item.h"
#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"
#include "module/host.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <vector>

// A vertex. An opaque handle of the plug-in interface.
struct HostPoint {
    float position[3];
};

// A triangle: the indices of its three vertices. They run clockwise as seen from its front, in left-handed axes, so
// that the cross product of its first two edges points out of the front. An opaque handle of the plug-in interface.
struct HostPolygon {
    std::uint32_t corners[3];
};

namespace velm::host {

struct UvMap {
    std::string name;
    std::pmr::vector<std::array<float, 2>> values; // by vertex; NaN where the map has no value
};

// Weights or colours of vertices, by name. Vertices without a value in the file have the weight 0 or the colour white.
struct VertexMap {
    std::string name;
    std::uint32_t size = 1;         // of a value: 1 for a weight, 3 for a colour, 4 for a colour with alpha
    std::pmr::vector<float> values; // by vertex, `size` numbers for each

    bool isWeight() const { return size == 1; }
    std::span<const float> valueOf(std::size_t vertex) const { return {values.data() + size * vertex, size}; }
    void reserve(std::size_t vertices) { values.reserve(size * vertices); }
    void resize(std::size_t vertices) { values.resize(size * vertices); }
    void copyValue(std::size_t from, std::size_t to) {
        for (std::size_t i = 0; i < size; ++i) values[size * to + i] = values[size * from + i];
    }
    // Adds a vertex with the value of another one.
    void appendCopyOf(std::size_t vertex) {
        for (std::size_t i = 0; i < size; ++i) values.push_back(values[size * vertex + i]);
    }
};

// Something that a mesh's file has and that is left out or drawn otherwise, for the user to be warned of.
struct MeshWarning {
    std::string brief;   // a few words, equal for equal causes: "hidden layers"
    std::string message; // a line
    // Whether this is about something that a scene which names the file describes itself, such as materials. Then it
    // only matters if the mesh file is opened instead of a scene.
    bool isBesideMesh = false;
};

// The buffers of a mesh from a file are in memory that the process that read it filled. Copies have their own.
struct Mesh {
    const std::shared_ptr<void> memory = nullptr; // where the buffers are; see readApart. Null: in the heap
    std::pmr::vector<HostPoint> points;
    std::pmr::vector<HostPolygon> triangles;
    std::pmr::vector<std::array<float, 3>> normals; // by vertex; empty: none
    std::vector<UvMap> uvMaps;
    std::vector<VertexMap> vertexMaps{};
    std::pmr::vector<std::uint32_t> polygonNumbers;  // by triangle; empty: every triangle is a polygon
    std::pmr::vector<std::uint16_t> materialNumbers; // by triangle; empty: all are of the first material
    std::vector<std::string> materials;              // names
    std::vector<MeshMaterial> materialValues;        // of those materials that the file describes, by name
    std::vector<MeshCamera> cameras;                 // in the file besides the mesh
    std::vector<MeshLight> lights;
    // The names of the file's nodes that have polygons, in the file's order; empty if there are fewer than two.
    std::vector<std::string> parts;
    std::uint32_t polygonCount = 0; // before polygons were cut into triangles

    // By vertex, the first vertex of the same point of the file: vertices of one point differ only in their maps.
    // Empty: vertices at equal positions count as one point.
    std::pmr::vector<std::uint32_t> firstOfPoint;
    // By vertex, the normal of the subdivision surface that it is on; zero for others. Empty: none. Smoothed corners
    // get it: see smoothNormals.
    std::pmr::vector<std::array<float, 3>> limitNormals;
    std::vector<MeshWarning> warnings;

    // What smoothNormals did: the angles that it computed `normals` with, and by vertex that it appended to `points`,
    // the vertex that was split. Both are empty where it computed no normals.
    std::vector<double> smoothingAngles;
    std::vector<std::uint32_t> splitFrom;

    // Reserves the memory that Embree reads beyond the last point: it reads 16 bytes at each. Copying a mesh loses it.
    void padPoints() { points.reserve(points.size() + 1); }

    // Whether vertices at the same point may differ in the values of maps.
    bool hasMaps() const { return !uvMaps.empty() || !vertexMaps.empty(); }

    // Whether there are normals that come from the file or shape, instead of smoothNormals.
    bool hasOwnNormals() const { return !normals.empty() && smoothingAngles.empty(); }

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

// Reads a mesh file in a process of its own (see host/io/reader_process.h), by the format that its contents have (see
// mesh_formats.h), and transforms it to world space. LightWave's objects are taken as they are; other files count as
// right-handed with +Y up and are mirrored in Z.
// Polygons with any number of corners become triangles; those without an area are dropped. Lines, points and materials
// that no polygon has are left out. Throws InputError with the file's name for a file that is missing, broken, without
// polygons or of another format, and if reading it exceeds a limit. `layer` selects one layer of a LightWave object by
// its number in the file, even if it is hidden; otherwise all visible layers are read. InputError if the file has no
// such layer. `subdivision` is the level of a LightWave object's subdivision surfaces: see host/object/subdivision.h.
// [interface thread]
Mesh readMesh(const std::string &file, const Transform &transform, std::optional<int> layer = {},
              int subdivision = kDefaultSubdivision);

// The names of all files that readMesh opens, the mesh file itself first; the others are such as a file of materials.
// InputError as readMesh, for a file that is missing or broken. Takes as long as reading. [interface thread]
std::vector<std::string> filesOfMesh(const std::string &file);

// The meshes of shapes, with one material without a name, and a UV map "UV": on the plane u runs to +X and v to +Z; on
// each side of the box and on the sphere u runs to the right and v up, as seen from outside, and the middle of the
// sphere's map is at -Z. Throws InputError (without a source location) for sizes that are not above 0 and for fewer
// than 3 segments. [any thread]
Mesh shapeMesh(const PlaneShape &shape, const Transform &transform);
Mesh shapeMesh(const BoxShape &shape, const Transform &transform);
Mesh shapeMesh(const SphereShape &shape, const Transform &transform);
inline Mesh shapeMesh(const MeshFile &shape, const Transform &transform) {
    return readMesh(shape.file, transform, shape.layer, shape.subdivision);
}

// The mesh of any shape: each alternative of ShapeDescription has its overload of shapeMesh.
Mesh makeMesh(const ShapeDescription &shape, const Transform &transform);

// A copy of a mesh in object coordinates, transformed to world space together with the normals that the file or shape
// gave. The mesh must not have normals from smoothNormals; these are computed for the copy. [any thread]
Mesh placedMesh(const Mesh &mesh, const Transform &transform);

// Computes the normals of a mesh that has none of its own, or computes them again for other angles. The normal of a
// corner is the mean of the normals of the triangles around it that have the same material and are inclined to the
// corner's own triangle by at most the material's smoothing angle, weighted by their angles at the corner (Thürmer and
// Wüthrich, "Computing Vertex Normals from Polygonal Facets", 1998). Vertices of one point count as one
// (see Mesh::firstOfPoint). Corners on a subdivision surface get its normal instead, whatever the angle and the
// materials around them, unless it points away from their triangle. A vertex whose corners get different normals is
// split. `smoothingAngles` are in degrees, by material; corners of materials with an angle of 0 get arbitrary normals.
// Without any angle above 0, the mesh gets no normals and loses those computed before. The result does not depend on
// earlier calls. [any thread]
void smoothNormals(Mesh &mesh, const std::vector<double> &smoothingAngles);

} // namespace velm::host
