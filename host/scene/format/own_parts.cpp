#include "host/scene/format/own_parts.h"

#include "host/base/names.h"
#include "host/scene/format/surface_collection.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>
#include <utility>

namespace velm::host {

namespace {

const MeshFile *meshWithOwnSurfaces(const ObjectDescription &object) {
    const auto *mesh = std::get_if<MeshFile>(&object.shape);
    const bool hasSurface = std::ranges::count(object.surfaces, "", &SurfaceUse::material) > 0;
    return mesh && !hasSurface ? mesh : nullptr;
}

// Whether reading the scene reads the surfaces and images of that object file.
bool reads(const SceneDescription &scene, const std::string &objectFile) {
    return scene.surfaceFile == objectFile ||
           std::ranges::any_of(scene.objects, [&objectFile](const ObjectDescription &object) {
               const MeshFile *mesh = meshWithOwnSurfaces(object);
               return mesh && mesh->file == objectFile;
           });
}

bool isFromObject(const SurfaceDescription &surface) {
    const SavedNetwork &saved = surface.saved;
    const auto sameSetting = [](const SettingDescription &one, const SettingDescription &other) {
        return one.label == other.label && one.value == other.value;
    };
    return !saved.file.empty() && surface.smoothingAngle == saved.smoothingAngle &&
           surface.doubleSided == saved.doubleSided &&
           std::ranges::equal(surface.settings, saved.settings, sameSetting);
}

const SurfaceDescription *find(const SceneDescription &scene, const std::string &name) {
    const auto found = std::ranges::find(scene.surfaces, name, &SurfaceDescription::name);
    return found == scene.surfaces.end() ? nullptr : &*found;
}

// The surface of an entry that reading adds again, since the object's own file brings it; null for other entries.
const SurfaceDescription *ownSurface(const SceneDescription &scene, const ObjectDescription &object,
                                     const SurfaceUse &use) {
    const MeshFile *mesh = meshWithOwnSurfaces(object);
    const SurfaceDescription *surface = mesh && use.fromObject ? find(scene, use.surface) : nullptr;
    return surface && isFromObject(*surface) && surface->saved.file == mesh->file ? surface : nullptr;
}

// The names that the surfaces of object files get when the scene is read; the order is that of addOwnSurfaces.
class NamesWhenRead {
  public:
    explicit NamesWhenRead(const SceneDescription &scene) {
        for (const SurfaceDescription &surface : scene.surfaces)
            if (!isFromObject(surface)) taken_.insert(surface.name);
        for (const SurfaceDescription &surface : scene.surfaces)
            if (isFromObject(surface) && surface.saved.file == scene.surfaceFile &&
                !taken_.contains(surface.saved.name))
                give(surface.saved);
        for (const ObjectDescription &object : scene.objects)
            for (const SurfaceUse &use : object.surfaces)
                if (const SurfaceDescription *surface = ownSurface(scene, object, use)) give(surface->saved);
    }

    // Whether that surface comes again, by its name in the scene.
    bool have(const SurfaceDescription &surface) const {
        const auto found = names_.find({surface.saved.file, surface.saved.name});
        return found != names_.end() && found->second == surface.name;
    }

  private:
    void give(const SavedNetwork &surface) {
        const std::pair key(surface.file, surface.name);
        if (names_.contains(key)) return;
        const std::string name =
            nameInScene(surface, [this](const std::string &wanted) { return taken_.contains(wanted); });
        taken_.insert(name);
        names_[key] = name;
    }

    std::set<std::string> taken_;
    std::map<std::pair<std::string, std::string>, std::string> names_; // by file and name in the file
};

void checkSurfaces(const SceneDescription &scene) {
    for (const SurfaceDescription &surface : scene.surfaces)
        if (!isFromObject(surface) && !surface.saved.block.empty())
            throw InputError(surface.location,
                             fmt::format("the surface {} of {} was changed, but its network is not described",
                                         inQuotes(surface.name), surface.saved.file));
    const NamesWhenRead names(scene);
    for (const ObjectDescription &object : scene.objects)
        for (const SurfaceUse &use : object.surfaces) {
            if (ownSurface(scene, object, use)) continue; // it follows the name
            const SurfaceDescription *surface = find(scene, use.surface);
            if (surface && isFromObject(*surface) && !names.have(*surface))
                throw InputError(use.location,
                                 fmt::format("the object {} has the surface {} of {}, which would not "
                                             "have this name when the scene is read again",
                                             inQuotes(object.name), inQuotes(use.surface), surface->saved.file));
        }
}

} // namespace

SceneDescription withoutOwnParts(const SceneDescription &scene) {
    checkSurfaces(scene);
    SceneDescription rest = scene;
    for (std::size_t i = 0; i < rest.objects.size(); ++i)
        std::erase_if(rest.objects[i].surfaces,
                      [&](const SurfaceUse &use) { return ownSurface(scene, scene.objects[i], use) != nullptr; });
    std::erase_if(rest.surfaces, isFromObject);
    std::erase_if(rest.images, [&scene](const ImageDescription &image) {
        return !image.objectFile.empty() && reads(scene, image.objectFile);
    });
    return rest;
}

} // namespace velm::host
