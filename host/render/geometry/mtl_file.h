// The materials in the files that OBJ files name, as the mesh library's own reader would give them.
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
    std::string name;  // as the OBJ file has it
    std::string uvMap; // of its polygons; empty for none
};

class MtlMaterials {
  public:
    // Begins with one material: that of polygons which name none, or one without a name.
    MtlMaterials() { find(""); }

    // Reads a file of materials. Where it describes a material again, the last value counts. `file` is its name. Lines
    // that make no sense are ignored and counted in `losses`.
    void read(std::string_view bytes, const std::string &file, Losses &losses);

    // The values of those that are used. Materials that no file describes are grey. The names of the result are in the
    // order of `uses`, which have different names. `file` is the OBJ file. What a surface cannot represent is counted
    // in `losses`.
    SceneMaterials used(const std::vector<ObjMaterialUse> &uses, const std::string &file, const MeshFormat &format,
                        Losses &losses) &&;

  private:
    struct Entry {
        std::unique_ptr<aiMaterial> material;
        std::size_t placedTextures = 0; // that are shown, with an offset or a scale
    };

    std::size_t find(const std::string &name);
    bool readLine(std::string_view keyword, std::string_view rest, Entry &entry);
    static bool readTexture(aiTextureType type, std::string_view rest, Entry &entry);

    std::vector<Entry> entries_;
    std::map<std::string, std::size_t> indices_; // by name
};

} // namespace velm::host
