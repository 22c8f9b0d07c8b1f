// The colours of vertices in assimp's scenes.
#pragma once

#include "host/render/geometry/mesh_builder.h"
#include "host/render/geometry/mesh_materials.h"

#include <cstdint>
#include <vector>

struct aiMesh;
struct aiScene;

namespace velm::host {

// Whether a mesh has polygons, and not only lines and points.
bool hasPolygons(const aiMesh &mesh);

// Copies the vertex colours of a scene's meshes to the mesh that is built from them, which has a map for each channel
// of any of them.
class SceneColours {
  public:
    // `scene` is not referred to later.
    explicit SceneColours(const aiScene &scene);

    // Adds the maps to a builder that has no vertices and no weight or colour maps yet.
    void addMaps(MeshBuilder &builder) const;
    // Sets BuilderVertex::values for a vertex of a mesh of the scene: white in the channels that the mesh does not
    // have.
    void take(const aiMesh &mesh, unsigned vertex, std::vector<float> &values) const;

  private:
    std::vector<std::uint32_t> sizes_; // by channel: the numbers of a colour, 3, or 4 if any alpha is not 1
};

// Adds the first colours of vertices to the materials of the meshes that have any.
void showColours(const aiScene &scene, SceneMaterials &materials);

} // namespace velm::host
