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
    std::vector<std::string> names; // by the scene's index; different ones have different names. May be empty
    std::vector<MeshMaterial> described;
};

// The materials of the meshes that `used` has, by their index, without those that the importer makes up for files that
// have none. `uvMaps` has the names of each material's UV maps, by channel; empty ones are missing. `losses` counts
// what a surface cannot represent. InputError if images inside of the file cannot be read. To be called in a process of
// its own: see readApart.
SceneMaterials materialsOf(const aiScene &scene, const std::string &file, const MeshFormat &format,
                           const std::vector<bool> &used, const std::vector<std::vector<std::string>> &uvMaps,
                           Losses &losses);

} // namespace velm::host
