// The materials of the meshes that assimp reads.
#pragma once

#include "host/object/losses.h"
#include "host/object/mesh_material.h"
#include "host/render/geometry/mesh_formats.h"

#include <assimp/scene.h>

#include <string>
#include <vector>

namespace velm::host {

// A scene's materials.
struct SceneMaterials {
    // By their index in the scene. Different materials have different names, except those that the importer makes up,
    // which may be empty.
    std::vector<std::string> names;
    std::vector<MeshMaterial> described; // without those that are made up or not used
};

// The materials of a scene. `used` says which of them polygons have, by their index. The importer makes materials up
// for files that have none. `uvMaps` are the names of each material's UV maps, by channel; an empty name means that
// there is no such map. Textures that a surface cannot represent are added to `losses`. InputError if images inside of
// the file cannot be read. To be called in a process of its own: see readApart.
SceneMaterials materialsOf(const aiScene &scene, const std::string &file, const MeshFormat &format,
                           const std::vector<bool> &used, const std::vector<std::vector<std::string>> &uvMaps,
                           Losses &losses);

} // namespace velm::host
