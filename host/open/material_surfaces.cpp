#include "host/open/material_surfaces.h"

#include "host/io/embedded_images.h"
#include "host/scene/convert/mesh_surfaces.h"
#include "host/scene/convert/texture_network.h"
#include "host/scene/object_finder.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace velm::host {

namespace {

// A name that a scene file can hold.
std::string writableName(std::string name) {
    for (std::size_t at = 0; (at = name.find("->", at)) != std::string::npos;) name.replace(at, 2, "-");
    const std::size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos) return "Unnamed";
    return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

// The name, with a number where something has it already.
template <class T>
std::string unusedName(const std::vector<T> &all, const std::string &wanted) {
    std::string name = wanted;
    for (int number = 2; std::ranges::count(all, name, &T::name) > 0; ++number)
        name = fmt::format("{} ({})", wanted, number);
    return name;
}

// Adds the images of one mesh file to a scene, each once.
class MaterialImages {
  public:
    MaterialImages(const std::string &file, const SearchPath &path, SceneDescription &scene)
        : file_(file), finder_(file, path), scene_(scene) {}

    // The name of a texture's image in the scene; empty for a missing one, without which the material has its plain
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
        if (const auto found = isInside ? std::optional(file) : finder_.find(file))
            image.file = *found;
        else
            image.notFound = finder_.whyNotFound(file);
        const std::string last = isInside ? fmt::format("image {}", embedded->index) : sceneNameOfImage(file);
        image.name = unusedName(scene_.images, writableName(last));
        scene_.images.push_back(image);
        return image.notFound.empty() ? image.name : std::string();
    }

    const std::string &file_;
    ObjectFinder finder_;
    SceneDescription &scene_;
    std::map<std::string, std::string> names_; // by the file's name in the mesh file
};

} // namespace

void addMaterialSurfaces(const Mesh &mesh, const SearchPath &path, ObjectDescription &object, SceneDescription &scene) {
    MaterialImages images(scene.file, path, scene);
    const auto imageName = [&images](const MeshTexture &texture) { return images.nameOf(texture); };
    for (const MeshMaterial &material : mesh.materialValues) {
        if (std::ranges::count(mesh.materials, material.name) == 0) continue; // all its polygons had no area
        const std::string name = unusedName(scene.surfaces, writableName(material.name));
        scene.surfaces.push_back(surfaceOfMaterial(material, name, scene.file, imageName));
        object.surfaces.push_back({.material = material.name, .surface = name, .location = object.location});
    }
    // A scene file names a surface for all other materials, even if there are none.
    const auto isCovered = [&object](const std::string &material) {
        return std::ranges::count(object.surfaces, material, &SurfaceUse::material) > 0;
    };
    if (object.surfaces.empty() || !std::ranges::all_of(mesh.materials, isCovered)) return;
    const SurfaceUse others{.material = "", .surface = object.surfaces.front().surface, .location = object.location};
    object.surfaces.insert(object.surfaces.begin(), others);
}

} // namespace velm::host
