#include "host/open/material_surfaces.h"

#include "host/io/embedded_images.h"
#include "host/io/named_files.h"
#include "host/open/new_names.h"
#include "host/scene/convert/mesh_surfaces.h"
#include "host/scene/convert/texture_network.h"
#include "host/scene/object_finder.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>

namespace velm::host {

namespace {

// Adds the images of one mesh file to a scene, each once.
class MaterialImages {
  public:
    MaterialImages(const std::string &file, const SearchPath &path, SceneDescription &scene)
        : file_(file), finder_(file, path), scene_(scene), unusedNames_(unusedNamesBeside(scene.images)) {}

    // The name of a texture's image in the scene; empty if the image is missing: then the material has its plain
    // colour.
    std::string nameOf(const MeshTexture &texture) {
        const auto [entry, isNew] = names_.try_emplace(texture.file);
        if (isNew) entry->second = add(texture.file);
        return entry->second;
    }

  private:
    std::string add(const std::string &file) {
        ImageDescription image;
        image.location.file = image.fileLocation.file = file_;
        image.file = file;
        const auto embedded = embeddedImage(file);
        const bool isInside = embedded && embedded->file == file_;
        std::string shown = file;
        auto found = isInside ? std::optional(file) : finder_.find(file);
        if (!found) { // names in glTF are URIs, and some programs write them to other files, too
            shown = withoutEscapes(file);
            found = finder_.find(shown);
        }
        if (found)
            image.file = *found;
        else
            image.notFound = finder_.whyNotFound(file);
        const std::string last = isInside ? fmt::format("image {}", embedded->index) : sceneNameOfImage(shown);
        image.name = unusedNames_.take(writableName(last));
        scene_.images.push_back(image);
        return image.notFound.empty() ? image.name : std::string();
    }

    const std::string &file_;
    ObjectFinder finder_;
    SceneDescription &scene_;
    UnusedNames unusedNames_;                  // for images
    std::map<std::string, std::string> names_; // by the file's name in the mesh file
};

} // namespace

void addMaterialSurfaces(const Mesh &mesh, const SearchPath &path, ObjectDescription &object, SceneDescription &scene) {
    MaterialImages images(scene.file, path, scene);
    const auto imageName = [&images](const MeshTexture &texture) { return images.nameOf(texture); };
    UnusedNames unusedNames = unusedNamesBeside(scene.surfaces);
    const std::set<std::string> drawn(mesh.materials.begin(), mesh.materials.end());
    std::set<std::string> covered;
    for (const SurfaceUse &use : object.surfaces) covered.insert(use.material);
    for (const MeshMaterial &material : mesh.materialValues) {
        if (!drawn.contains(material.name)) continue; // all its polygons had no area
        const std::string name = unusedNames.take(writableName(material.name));
        scene.surfaces.push_back(surfaceOfMaterial(material, name, scene.file, imageName));
        object.surfaces.push_back({.material = material.name, .surface = name, .location = object.location});
        covered.insert(material.name);
    }
    // A scene file names a surface for all other materials, even if there are none.
    if (object.surfaces.empty() || covered.contains("") || !std::ranges::includes(covered, drawn)) return;
    const SurfaceUse others{.material = "", .surface = object.surfaces.front().surface, .location = object.location};
    object.surfaces.insert(object.surfaces.begin(), others);
}

} // namespace velm::host
