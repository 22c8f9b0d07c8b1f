// Builds a mesh from the vertices and polygons of a file or shape.
#pragma once

#include "host/render/geometry/mesh.h"
#include "host/render/geometry/vertex_table.h"

#include <cstdint>
#include <memory_resource>
#include <string>
#include <unordered_map>
#include <vector>

namespace velm::host {

// A vertex to be added to a mesh, in world space.
struct BuilderVertex {
    Vec3 position, normal;
    std::vector<std::array<float, 2>> uvs; // one for each of the builder's UV maps
    std::vector<float> values{};           // of the builder's other vertex maps, in the order in which they were added
};

// Merges equal vertices as they are added, so that memory never holds a vertex twice.
class MeshBuilder {
  public:
    // `hasNormals`: every vertex has a normal of its own, which the mesh keeps. The buffers of the mesh are allocated
    // from `memory`.
    MeshBuilder(std::vector<std::string> uvMapNames, bool hasNormals,
                std::pmr::memory_resource *memory = std::pmr::get_default_resource());

    // Adds a map of weights (1 number for each vertex) or colours (3, or 4 with alpha). To be called before the first
    // vertex is added.
    void addVertexMap(std::string name, std::uint32_t size);

    // Returns the vertex's index in the mesh: that of an equal vertex, if there is one. Throws InputError for more than
    // 2^32 - 2 vertices.
    std::uint32_t addVertex(const BuilderVertex &vertex);

    // Adds a vertex without merging it with equal ones. Not to be mixed with addVertex.
    std::uint32_t addSeparateVertex(const BuilderVertex &vertex);

    // Merges all equal vertices, faster than addVertex does one by one. To be called after the last addSeparateVertex,
    // and before the first addPolygon. Returns the index in the mesh of each vertex, in the order in which they were
    // added: the one that addVertex would have returned.
    std::vector<std::uint32_t> mergeVertices();

    // Reserves memory for that many vertices and triangles in all, and for the padding of the points.
    void reserve(std::size_t vertices, std::size_t triangles);

    // Returns the material's number; the same one for the same name. Throws InputError for more than 65536 materials.
    std::uint16_t addMaterial(const std::string &name);

    // Adds a polygon whose corners run clockwise as seen from its front. It gets the next polygon number, and is cut
    // into triangles; triangles without an area are dropped.
    void addPolygon(const std::vector<std::uint32_t> &corners, std::uint16_t material);

    std::size_t triangleCount() const { return mesh_.triangles.size(); }

    // Returns the finished mesh; the builder is empty afterwards. Its buffers have room for more: see trimBuffers.
    Mesh finish();

  private:
    void requireRoom() const;
    bool equal(std::uint32_t a, std::uint32_t b) const;
    void append(const BuilderVertex &vertex);
    void moveVertex(std::size_t from, std::size_t to);
    void resizeVertices(std::size_t count);
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint16_t material);
    void numberTriangle(std::uint16_t material);
    std::uint32_t hashOf(std::size_t vertex) const;

    Mesh mesh_;
    bool hasNormals_;
    bool storesPolygons_ = false, storesMaterials_ = false; // whether numberTriangle has to store these numbers
    VertexTable table_;
    std::unordered_map<std::string, std::uint16_t> materialNumbers_; // by name
    std::vector<Vec3> positions_;                                    // the corners of the polygon being added
    std::vector<std::array<std::uint32_t, 3>> cut_;                  // its triangles
};

// Frees what the buffers of a mesh hold beyond its elements, where that is much, and pads its points.
void trimBuffers(Mesh &mesh);

// Cuts a polygon with the corners `points` into triangles of corner numbers (0 to count - 1), which run in the
// polygon's own sense. Clips ears, so that concave polygons come out right too.
void triangulate(const std::vector<Vec3> &points, std::vector<std::array<std::uint32_t, 3>> &triangles);

} // namespace velm::host
