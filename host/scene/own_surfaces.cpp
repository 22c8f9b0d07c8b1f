#include "host/scene/own_surfaces.h"

#include "host/files/object_file.h"
#include "host/io/files.h"
#include "host/object/object_geometry.h"
#include "host/object/old_surfaces.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/format/surface_collection.h"

#include <algorithm>
#include <map>

namespace velm::host {

namespace {

SurfaceDescription *findSurface(SceneDescription &scene, const std::string &name) {
    const auto found = std::ranges::find(scene.surfaces, name, &SurfaceDescription::name);
    return found == scene.surfaces.end() ? nullptr : &*found;
}

// Adds the surfaces and images of object files to a scene. Reads each file once.
class ObjectFiles {
  public:
    ObjectFiles(const SearchPath &path, SceneDescription &scene) : path_(path), scene_(scene) {}

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
        std::vector<SurfaceDescription> surfaces = surfacesIn(file, location);
        try {
            for (const std::string &name : surfacesOfPolygons(readObject(readFile(file), file)))
                if (std::ranges::count(surfaces, name, &SurfaceDescription::name) == 0)
                    surfaces.push_back(undescribedSurface(name, file));
        } catch (const InputError &error) {
            throw InputError(location, error.what());
        }
        return meshes_[file] = std::move(surfaces);
    }

    // The name that the scene has for a surface of a file. Adds the surface to the scene if it is not there yet.
    std::string nameOf(const SurfaceDescription &surface) {
        for (const SurfaceDescription &one : scene_.surfaces)
            if (one.saved.file == surface.saved.file && one.saved.name == surface.saved.name) return one.name;
        std::string name =
            nameInScene(surface.saved, [this](const std::string &wanted) { return findSurface(scene_, wanted); });
        scene_.surfaces.push_back(surface);
        scene_.surfaces.back().name = name;
        return name;
    }

  private:
    std::vector<SurfaceDescription> read(const std::string &bytes, const std::string &file) {
        if (isOldObject(bytes)) return surfacesOfOldObject(bytes, file);
        const ObjectFile object(bytes, file);
        for (ImageDescription &image : imagesOf(object, path_))
            if (std::ranges::count(scene_.images, image.name, &ImageDescription::name) == 0)
                scene_.images.push_back(std::move(image));
        return surfacesOf(object);
    }

    const SearchPath &path_;
    SceneDescription &scene_;
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
