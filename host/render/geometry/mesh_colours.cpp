#include "host/render/geometry/mesh_colours.h"

#include "host/render/geometry/mesh_formats.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>
#include <string>
#include <string_view>

namespace velm::host {
namespace {

bool hasAlpha(const aiMesh &mesh, unsigned channel) {
    const aiColor4D *colours = mesh.mColors[channel];
    return std::any_of(colours, colours + mesh.mNumVertices, [](const aiColor4D &colour) { return colour.a != 1; });
}

std::string nameOfMap(std::size_t channel) {
    return channel == 0 ? kColourMap : fmt::format("{} {}", kColourMap, channel + 1);
}

// Whether the alpha of colours multiplies the opacity of a material: in glTF, unless it is opaque.
bool hasOpacity(const aiMaterial &material) {
    aiString mode;
    return material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS &&
           std::string_view(mode.C_Str()) != "OPAQUE";
}

void show(bool withAlpha, MeshMaterial &material) {
    material.colourMap = kColourMap;
    material.hasColourAlpha = withAlpha;
}

} // namespace

bool hasPolygons(const aiMesh &mesh) {
    return std::any_of(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                       [](const aiFace &face) { return face.mNumIndices > 2; });
}

SceneColours::SceneColours(const aiScene &scene) {
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[i];
        for (unsigned channel = 0; channel < AI_MAX_NUMBER_OF_COLOR_SETS; ++channel) {
            if (!mesh.HasVertexColors(channel) || !hasPolygons(mesh)) continue;
            sizes_.resize(std::max<std::size_t>(sizes_.size(), channel + 1), 3);
            if (hasAlpha(mesh, channel)) sizes_[channel] = 4;
        }
    }
}

void SceneColours::addMaps(MeshBuilder &builder) const {
    for (std::size_t channel = 0; channel < sizes_.size(); ++channel)
        builder.addVertexMap(nameOfMap(channel), sizes_[channel]);
}

void SceneColours::take(const aiMesh &mesh, unsigned vertex, std::vector<float> &values) const {
    values.clear();
    for (unsigned channel = 0; channel < sizes_.size(); ++channel) {
        const aiColor4D colour = mesh.HasVertexColors(channel) ? mesh.mColors[channel][vertex] : aiColor4D(1, 1, 1, 1);
        const std::array numbers{colour.r, colour.g, colour.b, colour.a};
        values.insert(values.end(), numbers.begin(), numbers.begin() + sizes_[channel]);
    }
}

void showColours(const aiScene &scene, SceneMaterials &materials) {
    std::map<std::string, bool> coloured; // names, and whether the alpha counts
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[i];
        const unsigned material = mesh.mMaterialIndex;
        if (material >= materials.names.size() || !hasPolygons(mesh) || !mesh.HasVertexColors(0)) continue;
        bool &withAlpha = coloured[materials.names[material]];
        withAlpha = withAlpha || (hasOpacity(*scene.mMaterials[material]) && hasAlpha(mesh, 0));
    }
    for (MeshMaterial &material : materials.described) {
        const auto found = coloured.find(material.name);
        if (found == coloured.end()) continue;
        show(found->second, material);
        coloured.erase(found);
    }
    // What is left are materials that the importer made up, which have no values.
    for (const auto &[name, withAlpha] : coloured) {
        MeshMaterial &material = materials.described.emplace_back();
        material.name = name;
        show(withAlpha, material);
    }
}

} // namespace velm::host
