#include "host/scene/own_surfaces.h"

#include "host/files/object_file.h"
#include "host/io/files.h"
#include "host/object/object_geometry.h"
#include "host/object/old_surfaces.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/format/surface_collection.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <unordered_map>
#include <utility>

namespace velm::host {

namespace {

SurfaceDescription *findSurface(SceneDescription &scene, const std::string &name) {
    const auto found = std::ranges::find(scene.surfaces, name, &SurfaceDescription::name);
    return found == scene.surfaces.end() ? nullptr : &*found;
}

// Adds the surfaces and images of object files to a scene. Reads each file once.
class ObjectFiles {
  public:
    ObjectFiles(const SearchPath &path, SceneDescription &scene) : path_(path), scene_(scene) {
        for (std::size_t i = 0; i < scene.images.size(); ++i) images_.try_emplace(scene.images[i].name, i);
    }

    // The surfaces that the file describes.
    const std::vector<SurfaceDescription> &surfacesIn(const std::string &file, const SourceLocation &location) {
        const auto known = files_.find(file);
        if (known != files_.end()) return known->second;
        try {
            return files_[file] = read(readFile(file), file);
        } catch (const InputError &error) {
            throw InputError(location, error.what());
        }
    }

    // Also those that only its polygons name.
    const std::vector<SurfaceDescription> &surfacesOfMesh(const std::string &file, const SourceLocation &location) {
        const auto known = meshes_.find(file);
        if (known != meshes_.end()) return known->second;
        try {
            const std::string bytes = readFile(file); // once, since objects may be large
            if (!files_.contains(file)) files_[file] = read(bytes, file);
            std::vector<SurfaceDescription> surfaces = files_[file];
            for (const std::string &name : surfacesOfPolygons(readObject(bytes, file)))
                if (std::ranges::count(surfaces, name, &SurfaceDescription::name) == 0)
                    surfaces.push_back(undescribedSurface(name, file));
            return meshes_[file] = std::move(surfaces);
        } catch (const InputError &error) {
            throw InputError(location, error.what());
        }
    }

    // The name that the scene has for a surface of a file. Adds the surface to the scene if it is not there yet.
    std::string nameOf(const SurfaceDescription &surface) {
        for (const SurfaceDescription &one : scene_.surfaces)
            if (one.saved.file == surface.saved.file && one.saved.name == surface.saved.name) return one.name;
        std::string name =
            nameInScene(surface.saved, [this](const std::string &wanted) { return findSurface(scene_, wanted); });
        SurfaceDescription &added = scene_.surfaces.emplace_back(surface);
        for (ConnectionDescription &connection : added.network.connections) // the root has the surface's name
            if (connection.toNode == added.name) connection.toNode = name;
        added.name = name;
        return name;
    }

  private:
    std::vector<SurfaceDescription> read(const std::string &bytes, const std::string &file) {
        if (isOldObject(bytes))
            return added(imagesOfOldObject(bytes, file, path_), surfacesOfOldObject(bytes, file), file);
        const ObjectFile object(bytes, file);
        return added(imagesOf(object, path_), surfacesOf(object), file);
    }

    // Adds an object's images and notes to the scene and gives its surfaces.
    std::vector<SurfaceDescription> added(std::vector<ImageDescription> images, ObjectSurfaces found,
                                          const std::string &file) {
        std::map<std::string, std::string> names;
        for (ImageDescription &image : images) {
            const std::string inObject = image.name;
            names[inObject] = addImage(std::move(image));
        }
        renameImages(names, found.surfaces);
        for (Losses::Text &loss : found.losses.texts())
            scene_.notes.push_back({.file = file, .brief = std::move(loss.brief), .message = std::move(loss.message)});
        return std::move(found.surfaces);
    }

    // Adds an image and returns its name in the scene. An image that the scene has already, under its name or a
    // numbered one, is not added again. An image of the same name in the scene file replaces the object's. If another
    // object has a different image of that name, the new one gets a number.
    std::string addImage(ImageDescription image) {
        const ImageDescription *first = findImage(image.name);
        std::string name = image.name;
        int number = 2;
        for (const ImageDescription *known = first; known; known = findImage(name)) {
            if (known->file == image.file && known->sequence == image.sequence && known->filters == image.filters)
                return name;
            name = fmt::format("{} ({})", image.name, number++);
        }
        if (first && first->objectFile.empty()) return image.name;
        image.name = name;
        images_.try_emplace(name, scene_.images.size());
        scene_.images.push_back(std::move(image));
        return name;
    }

    const ImageDescription *findImage(const std::string &name) const {
        const auto found = images_.find(name);
        return found == images_.end() ? nullptr : &scene_.images[found->second];
    }

    // Gives images in the networks of texture layers their names in the scene, by their names in the object. Saved
    // networks refer to images by their files.
    static void renameImages(const std::map<std::string, std::string> &names,
                             std::vector<SurfaceDescription> &surfaces) {
        for (SurfaceDescription &surface : surfaces)
            for (NodeDescription &node : surface.network.nodes)
                for (SettingDescription &setting : node.settings) {
                    if (setting.label != "Image") continue;
                    const auto found = names.find(std::get<std::string>(setting.value));
                    if (found != names.end()) setting.value = found->second;
                }
    }

    const SearchPath &path_;
    SceneDescription &scene_;
    std::unordered_map<std::string, std::size_t> images_; // the indices of the scene's images, by name
    std::map<std::string, std::vector<SurfaceDescription>> files_, meshes_; // by file
};

} // namespace

void addOwnSurfaces(const SearchPath &path, SceneDescription &scene) {
    ObjectFiles files(path, scene);
    if (!scene.surfaceFile.empty())
        for (const SurfaceDescription &surface : files.surfacesIn(scene.surfaceFile, scene.surfaceFileLocation))
            if (!findSurface(scene, surface.name)) scene.surfaces.push_back(surface);
    for (ObjectDescription &object : scene.objects) {
        if (std::ranges::count(object.surfaces, "", &SurfaceUse::material) > 0) continue;
        const std::string &file = std::get<MeshFile>(object.shape).file;
        for (const SurfaceDescription &surface : files.surfacesOfMesh(file, object.location))
            if (std::ranges::count(object.surfaces, surface.saved.name, &SurfaceUse::material) == 0)
                object.surfaces.push_back({.material = surface.saved.name,
                                           .surface = files.nameOf(surface),
                                           .location = object.location,
                                           .fromObject = true});
    }
}

} // namespace velm::host
