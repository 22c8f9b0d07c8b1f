// Puts a mesh together from vertices and polygons as files and shapes give them.
#pragma once

#include "host/render/geometry/mesh.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// A vertex on its way into a mesh, already in world space.
struct BuilderVertex {
    Vec3 position, normal;
    std::vector<std::array<float, 2>> uvs; // one for each of the builder's maps
};

// Equal vertices are merged as they come, so that nothing is ever kept twice.
class MeshBuilder {
  public:
    // `hasNormals`: every vertex comes with a normal that is to be kept.
    MeshBuilder(std::vector<std::string> uvMapNames, bool hasNormals);

    // Gives the vertex's number in the mesh.
    std::uint32_t addVertex(const BuilderVertex &vertex);

    // Gives the material's number; the same one for the same name.
    std::uint16_t addMaterial(const std::string &name);

    // A polygon with its corners clockwise as seen from the front. It gets the next polygon number, and as many
    // triangles as it needs; those without an area are left out.
    void addPolygon(const std::vector<std::uint32_t> &corners, std::uint16_t material);

    std::size_t triangleCount() const { return mesh_.triangles.size(); }

    // The finished mesh, its buffers trimmed; the builder is empty after this.
    Mesh finish();

  private:
    bool equals(std::uint32_t number, const BuilderVertex &vertex) const;
    void append(const BuilderVertex &vertex);
    void grow();
    void addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint16_t material);
    std::uint64_t hashOf(std::uint32_t number) const;

    Mesh mesh_;
    bool hasNormals_;
    std::vector<std::uint32_t> table_;              // open addressing; vertex number + 1, 0 is free
    std::vector<std::array<std::uint32_t, 3>> cut_; // the triangles of the polygon being added
};

// Cuts a polygon into triangles of corner numbers (0 to count - 1), in the polygon's own sense of rotation: by ears, so
// that polygons with notches come out right too. `points` are its corners.
void triangulate(const std::vector<Vec3> &points, std::vector<std::array<std::uint32_t, 3>> &triangles);

} // namespace velm::host
