// Reads mesh files with assimp.
#include "host/render/geometry/assimp_names.h"
#include "host/render/geometry/mesh_builder.h"
#include "host/render/geometry/mesh_colours.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/mesh_items.h"
#include "host/render/geometry/mesh_materials.h"
#include "host/render/geometry/texture_placing.h"

#include "host/base/error.h"
#include "host/io/files.h"
#include "host/io/named_files.h"
#include "host/object/losses.h"

#include <assimp/BaseImporter.h>
#include <assimp/DefaultIOSystem.h>
#include <assimp/Importer.hpp>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <fmt/format.h>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace velm::host {
namespace {

// Opens the mesh file under a name with the ending of its format, and the other files that it names, such as its
// materials. They must be readable regular files too.
class MeshFiles final : public Assimp::DefaultIOSystem {
  public:
    // `opened`, which may be null, gets the name of each file that is opened.
    MeshFiles(std::string file, std::string alias, std::vector<std::string> *opened)
        : file_(std::move(file)), alias_(std::move(alias)), opened_(opened) {}

    bool Exists(const char *name) const override { return !whyUnreadable(realName(name)); } // the base's opens it
    Assimp::IOStream *Open(const char *name, const char *mode) override {
        const std::string real = realName(name);
        Assimp::IOStream *stream = whyUnreadable(real) ? nullptr : DefaultIOSystem::Open(real.c_str(), mode);
        if (stream && opened_) opened_->push_back(real);
        return stream;
    }

  private:
    std::string realName(const std::string &name) const {
        if (name == alias_) return file_;
        const std::string directory = file_.substr(0, file_.rfind('/') + 1);
        return name.starts_with(directory) ? namedFile(directory, name.substr(directory.size())) : name;
    }

    std::string file_, alias_;
    std::vector<std::string> *opened_;
};

// Removes all importers but those of a format, so that no other one looks at the file.
void keepImporters(Assimp::Importer &importer, const MeshFormat &format) {
    for (std::size_t i = importer.GetImporterCount(); i-- > 0;) {
        std::istringstream endings(importer.GetImporterInfo(i)->mFileExtensions);
        if (std::find(std::istream_iterator<std::string>(endings), {}, format.ending) !=
            std::istream_iterator<std::string>())
            continue;
        const std::unique_ptr<Assimp::BaseImporter> removed(importer.GetImporter(i));
        importer.UnregisterLoader(removed.get());
    }
}

// The name of a mesh's UV channel: the file's, or "UV", "UV 2" and so on.
std::string uvNameOf(const aiMesh &mesh, unsigned channel) {
    const aiString *name = mesh.GetTextureCoordsName(channel);
    if (name && name->length > 0) return name->C_Str();
    return channel == 0 ? "UV" : "UV " + std::to_string(channel + 1);
}

// Things of one kind that have names.
template <class Thing>
void addNamed(Loss kind, Thing *const *things, unsigned count, Losses &losses) {
    if (count > 0) losses.add(kind, nameOrNumber(things[0]->mName, 0), count);
}

// What the file holds that is not read. itemsOf and materialsOf add to it.
Losses lossesOf(const aiScene &scene) {
    Losses losses;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[i];
        if (!hasPolygons(mesh)) continue;
        const std::string place = "of the mesh " + nameOrNumber(mesh.mName, i);
        losses.add(Loss::morphTarget, place, mesh.mNumAnimMeshes);
        addNamed(Loss::bone, mesh.mBones, mesh.mNumBones, losses);
    }
    addNamed(Loss::animation, scene.mAnimations, scene.mNumAnimations, losses);
    return losses;
}

std::vector<unsigned> uvChannelsOf(const aiMesh &mesh) {
    std::vector<unsigned> channels;
    for (unsigned channel = 0; channel < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++channel)
        if (mesh.HasTextureCoords(channel)) channels.push_back(channel);
    return channels;
}

// The materials that polygons have.
SceneMaterials usedMaterialsOf(const aiScene &scene, const std::string &file, const MeshFormat &format,
                               Losses &losses) {
    std::vector<bool> used(scene.mNumMaterials);
    std::vector<std::vector<std::string>> uvMaps(scene.mNumMaterials); // of the first mesh that has each material
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh &mesh = *scene.mMeshes[i];
        if (mesh.mMaterialIndex >= used.size() || used[mesh.mMaterialIndex] || !hasPolygons(mesh)) continue;
        used[mesh.mMaterialIndex] = true;
        std::vector<std::string> &names = uvMaps[mesh.mMaterialIndex];
        names.resize(AI_MAX_NUMBER_OF_TEXTURECOORDS);
        for (const unsigned channel : uvChannelsOf(mesh)) names[channel] = uvNameOf(mesh, channel);
    }
    SceneMaterials materials = materialsOf(scene, file, format, used, uvMaps, losses);
    showColours(scene, materials);
    return materials;
}

// Turns assimp's scene of a file into one mesh.
class FileMesh {
  public:
    FileMesh(const aiScene &scene, const Transform &transform, const std::string &file, const MeshFormat &format,
             std::pmr::memory_resource *memory)
        : scene_(scene), transform_(transform), file_(file), losses_(lossesOf(scene)),
          items_(itemsOf(scene, file, format, losses_)), materials_(usedMaterialsOf(scene, file, format, losses_)),
          uvNames_(allUvNames(scene)), hasNormals_(allHaveNormals(scene)), colours_(scene),
          builder_(uvNames_, hasNormals_, memory) {
        colours_.addMaps(builder_);
    }

    Mesh build() {
        reserve();
        addNode(*scene_.mRootNode, aiMatrix4x4());
        if (builder_.triangleCount() == 0) throw InputError({.file = file_}, "the mesh has no polygons");
        Mesh mesh = builder_.finish();
        mesh.materialValues = std::move(materials_.described);
        mesh.cameras = std::move(items_.cameras);
        mesh.lights = std::move(items_.lights);
        if (parts_.size() > 1) mesh.parts = std::move(parts_); // the importer may have made a single one up
        addWarnings(losses_, mesh);
        return mesh;
    }

  private:
    static std::vector<std::string> allUvNames(const aiScene &scene) {
        std::vector<std::string> names;
        for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
            for (const unsigned channel : uvChannelsOf(*scene.mMeshes[i])) {
                const std::string name = uvNameOf(*scene.mMeshes[i], channel);
                if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
            }
        }
        return names;
    }

    static bool allHaveNormals(const aiScene &scene) {
        return std::all_of(scene.mMeshes, scene.mMeshes + scene.mNumMeshes,
                           [](const aiMesh *mesh) { return mesh->HasNormals() || !hasPolygons(*mesh); });
    }

    // Makes room for the vertices and triangles of all meshes, each once; the builder grows for meshes that several
    // nodes have. Room that is not needed because vertices are merged takes no memory, since it is never written.
    void reserve() {
        std::size_t vertices = 0, triangles = 0;
        for (unsigned i = 0; i < scene_.mNumMeshes; ++i) {
            const aiMesh &mesh = *scene_.mMeshes[i];
            vertices += mesh.mNumVertices;
            for (unsigned k = 0; k < mesh.mNumFaces; ++k) triangles += std::max(mesh.mFaces[k].mNumIndices, 2u) - 2;
        }
        builder_.reserve(vertices, triangles);
    }

    void addNode(const aiNode &node, const aiMatrix4x4 &parent) {
        const aiMatrix4x4 toFile = parent * node.mTransformation;
        notePart(node);
        for (unsigned i = 0; i < node.mNumMeshes; ++i) addMesh(*scene_.mMeshes[node.mMeshes[i]], toFile);
        for (unsigned i = 0; i < node.mNumChildren; ++i) addNode(*node.mChildren[i], toFile);
    }

    void notePart(const aiNode &node) {
        const bool isDrawn = std::any_of(node.mMeshes, node.mMeshes + node.mNumMeshes,
                                         [&](unsigned mesh) { return hasPolygons(*scene_.mMeshes[mesh]); });
        if (isDrawn && node.mName.length > 0 && partNames_.insert(node.mName.C_Str()).second)
            parts_.emplace_back(node.mName.C_Str());
    }

    void addMesh(const aiMesh &mesh, const aiMatrix4x4 &toFile) {
        if (!hasPolygons(mesh)) return;
        const std::vector<std::uint32_t> numbers = addVertices(mesh, toFile);
        const std::uint16_t material = builder_.addMaterial(materialName(mesh));
        // Files have right-handed axes. The change to left-handed ones reverses every polygon, and so does each further
        // mirroring transform.
        const bool turn = !(transform_.mirrors() != (aiMatrix3x3(toFile).Determinant() < 0));
        std::vector<std::uint32_t> corners;
        for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
            const aiFace &face = mesh.mFaces[i];
            if (face.mNumIndices < 3) continue;
            corners.clear();
            for (unsigned k = 0; k < face.mNumIndices; ++k) {
                if (face.mIndices[k] >= numbers.size())
                    throw InputError({.file = file_}, "a polygon of the mesh has a vertex that is not there");
                corners.push_back(numbers[face.mIndices[k]]);
            }
            if (turn) std::reverse(corners.begin() + 1, corners.end());
            builder_.addPolygon(corners, material);
        }
    }

    std::vector<std::uint32_t> addVertices(const aiMesh &mesh, const aiMatrix4x4 &toFile) {
        std::vector<std::size_t> target; // by channel: the index of its map in uvNames_
        const std::vector<unsigned> channels = uvChannelsOf(mesh);
        for (const unsigned channel : channels) {
            const auto found = std::find(uvNames_.begin(), uvNames_.end(), uvNameOf(mesh, channel));
            target.push_back(static_cast<std::size_t>(found - uvNames_.begin()));
        }
        const aiMatrix3x3 normalToParent = aiMatrix3x3(toFile).Inverse().Transpose();
        constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
        BuilderVertex vertex;
        std::vector<std::uint32_t> numbers;
        numbers.reserve(mesh.mNumVertices);
        for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
            const aiVector3D point = toFile * mesh.mVertices[i];
            vertex.position = transform_.pointToWorld({point.x, point.y, -point.z});
            if (hasNormals_) {
                const aiVector3D normal = normalToParent * mesh.mNormals[i];
                // A normal without a direction stays 0, and shading uses the polygon's own normal.
                vertex.normal = normalised(transform_.normalToWorld({normal.x, normal.y, -normal.z}), {0, 0, 0});
            }
            vertex.uvs.assign(uvNames_.size(), {kNone, kNone});
            for (std::size_t k = 0; k < channels.size(); ++k) {
                const aiVector3D &uv = mesh.mTextureCoords[channels[k]][i];
                vertex.uvs[target[k]] = {uv.x, uv.y};
            }
            colours_.take(mesh, i, vertex.values);
            numbers.push_back(builder_.addVertex(vertex));
        }
        return numbers;
    }

    std::string materialName(const aiMesh &mesh) const {
        return mesh.mMaterialIndex < materials_.names.size() ? materials_.names[mesh.mMaterialIndex] : "";
    }

    const aiScene &scene_;
    const Transform &transform_;
    const std::string &file_;
    Losses losses_;
    MeshItems items_;
    SceneMaterials materials_;
    std::vector<std::string> uvNames_;
    std::vector<std::string> parts_;
    std::unordered_set<std::string> partNames_; // of parts_
    bool hasNormals_;
    SceneColours colours_;
    MeshBuilder builder_;
};

// The name of a file with the ending of its format, in upper or lower case: the file's own, if it has it.
std::string aliasOf(const std::string &file, const MeshFormat &format) {
    const std::string ending = std::string(".") + format.ending;
    const bool hasEnding = file.size() >= ending.size() &&
                           std::equal(ending.begin(), ending.end(), file.end() - static_cast<int>(ending.size()),
                                      [](char a, unsigned char b) { return a == std::tolower(b); });
    return hasEnding ? file : file + ending;
}

// The scene belongs to the importer.
const aiScene &import(Assimp::Importer &importer, const std::string &file, const MeshFormat &format,
                      std::vector<std::string> *opened) {
    const std::string alias = aliasOf(file, format);
    keepImporters(importer, format);
    importer.SetIOHandler(std::make_unique<MeshFiles>(file, alias, opened).release()); // which the importer owns
    const aiScene *scene = importer.ReadFile(alias, 0);
    if (scene) {
        if (format.isGltf()) correctTexturePlacing(*scene);
        scene = importer.ApplyPostProcessing(aiProcess_TransformUVCoords);
    }
    if (!scene) {
        std::string why = importer.GetErrorString();
        if (why == "std::bad_alloc") throw std::bad_alloc();
        if (const std::size_t at = why.find(alias); at != std::string::npos) why.replace(at, alias.size(), file);
        throw InputError({.file = file}, "cannot read the mesh: " + why);
    }
    return *scene;
}

} // namespace

Mesh readWithAssimp(const std::string &file, const MeshFormat &format, const Transform &transform,
                    std::pmr::memory_resource *memory) {
    Assimp::Importer importer;
    const aiScene &scene = import(importer, file, format, nullptr);
    if (!scene.mRootNode || scene.mNumMeshes == 0) throw InputError({.file = file}, "the mesh has no polygons");
    return FileMesh(scene, transform, file, format, memory).build();
}

std::vector<std::string> filesReadWithAssimp(const std::string &file, const MeshFormat &format) {
    std::vector<std::string> opened, files{file};
    Assimp::Importer importer;
    import(importer, file, format, &opened);
    for (const std::string &one : opened)
        if (std::find(files.begin(), files.end(), one) == files.end()) files.push_back(one);
    return files;
}

} // namespace velm::host
