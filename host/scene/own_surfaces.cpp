#include "host/scene/own_surfaces.h"

#include "host/io/files.h"
#include "host/scene/convert/object_surfaces.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace velm::host {

namespace {

SurfaceDescription *findSurface(SceneDescription &scene, const std::string &name) {
    const auto found = std::ranges::find(scene.surfaces, name, &SurfaceDescription::name);
    return found == scene.surfaces.end() ? nullptr : &*found;
}

// The surfaces of object files on their way into a scene; each file is read once.
class Sources {
  public:
    Sources(const SearchPath &path, SceneDescription &scene) : path_(path), scene_(scene) {}

    const std::vector<SurfaceDescription> &surfacesIn(const std::string &file, const SourceLocation &location) {
        const auto known = files_.find(file);
        if (known != files_.end()) return known->second;
        try {
            const ObjectFile object(readFile(file), file);
            for (ImageDescription &image : imagesOf(object, path_))
                if (std::ranges::count(scene_.images, image.name, &ImageDescription::name) == 0)
                    scene_.images.push_back(std::move(image));
            return files_[file] = surfacesOf(object);
        } catch (const InputError &error) {
            throw InputError(location, error.what());
        }
    }

    // The name by which the scene has that surface of a file; added where it is not there yet.
    std::string nameOf(const SurfaceDescription &surface) {
        for (const SurfaceDescription &one : scene_.surfaces)
            if (one.saved.file == surface.saved.file && one.saved.name == surface.saved.name) return one.name;
        const std::string file = std::filesystem::path(surface.saved.file).filename().string();
        std::string name = surface.name;
        for (int number = 1; findSurface(scene_, name); ++number)
            name = number == 1 ? fmt::format("{} ({})", surface.name, file)
                               : fmt::format("{} ({}, {})", surface.name, file, number);
        scene_.surfaces.push_back(surface);
        scene_.surfaces.back().name = name;
        return name;
    }

  private:
    const SearchPath &path_;
    SceneDescription &scene_;
    std::map<std::string, std::vector<SurfaceDescription>> files_;
};

} // namespace

void addOwnSurfaces(const SearchPath &path, SceneDescription &scene) {
    Sources sources(path, scene);
    if (!scene.surfaceFile.empty())
        for (const SurfaceDescription &surface : sources.surfacesIn(scene.surfaceFile, scene.surfaceFileLocation))
            if (!findSurface(scene, surface.name)) scene.surfaces.push_back(surface);
    for (ObjectDescription &object : scene.objects) {
        if (std::ranges::count(object.surfaces, "", &SurfaceUse::material) > 0) continue;
        const std::string &file = std::get<MeshFile>(object.shape).file;
        for (const SurfaceDescription &surface : sources.surfacesIn(file, object.location))
            if (std::ranges::count(object.surfaces, surface.saved.name, &SurfaceUse::material) == 0)
                object.surfaces.push_back(
                    {.material = surface.saved.name, .surface = sources.nameOf(surface), .location = object.location});
    }
}

} // namespace velm::host
