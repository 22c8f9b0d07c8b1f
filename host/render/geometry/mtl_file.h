// Reads the material files of OBJ files, with the same results as the mesh library's own reader.
#pragma once

#include "host/object/losses.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/mesh_materials.h"

#include <assimp/material.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// A material that polygons have.
struct ObjMaterialUse {
    std::string name;  // in the OBJ file
    std::string uvMap; // of its polygons; empty for none
};

class MtlMaterials {
  public:
    // Begins with one material, without a name: that of polygons that name no material.
    MtlMaterials() { find(""); }

    // Reads a file of materials, whose name is `file`. If a material is described again, the last values count.
    // Malformed lines are ignored and added to `losses`.
    void read(std::string_view bytes, const std::string &file, Losses &losses);

    // Converts the materials that are used. Those that no file describes are grey. The names in the result are in the
    // order of `uses`, which have different names. `file` is the OBJ file. Textures that a surface cannot represent are
    // added to `losses`.
    SceneMaterials used(const std::vector<ObjMaterialUse> &uses, const std::string &file, const MeshFormat &format,
                        Losses &losses) &&;

  private:
    struct Entry {
        std::unique_ptr<aiMaterial> material;
        std::size_t placedTextures = 0; // textures that are shown and have an offset or a scale
    };

    std::size_t find(const std::string &name);
    bool readLine(std::string_view keyword, std::string_view rest, Entry &entry);
    static bool readTexture(aiTextureType type, std::string_view rest, Entry &entry);

    std::vector<Entry> entries_;
    std::map<std::string, std::size_t> indices_; // by name
};

} // namespace velm::host
