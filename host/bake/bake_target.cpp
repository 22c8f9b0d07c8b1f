#include "host/bake/bake_target.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/graph/surface.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace velm::host {
namespace {

// "; there are "A", "B"" or "; there are none".
std::string listed(std::vector<std::string> names) {
    if (names.empty()) return "; there are none";
    for (std::string &name : names) name = inQuotes(name);
    return fmt::format("; there {} {}", names.size() == 1 ? "is" : "are", fmt::join(names, ", "));
}

std::vector<std::string> objectNames(const RenderSceneData &scene) {
    std::vector<std::string> names;
    for (const RenderObject &object : scene.objects) names.push_back(object.item->name);
    return names;
}

} // namespace

std::uint32_t findObject(const RenderSceneData &scene, const std::string &name) {
    if (name.empty() && scene.objects.size() != 1)
        throw InputError(scene.objects.empty()
                             ? std::string("the scene has no objects")
                             : "the scene has several objects; one has to be named" + listed(objectNames(scene)));
    const auto found = std::ranges::find_if(
        scene.objects, [&](const RenderObject &object) { return name.empty() || object.item->name == name; });
    if (found == scene.objects.end())
        throw InputError(fmt::format("there is no object {}{}", inQuotes(name), listed(objectNames(scene))));
    return static_cast<std::uint32_t>(found - scene.objects.begin());
}

std::vector<std::uint16_t> findSurfaces(const RenderSceneData &scene, std::uint32_t object,
                                        const std::vector<std::string> &names) {
    std::vector<std::uint16_t> known = scene.objects[object].surfaces;
    std::ranges::sort(known);
    known.erase(std::unique(known.begin(), known.end()), known.end());
    if (names.empty()) return known;
    std::vector<std::uint16_t> wanted;
    for (const std::string &name : names) {
        const auto found = std::ranges::find_if(
            known, [&](std::uint16_t surface) { return scene.surfaces[surface].surface->name() == name; });
        if (found == known.end()) {
            std::vector<std::string> others;
            for (const std::uint16_t surface : known) others.push_back(scene.surfaces[surface].surface->name());
            throw InputError(fmt::format("the object {} has no surface {}{}",
                                         inQuotes(scene.objects[object].item->name), inQuotes(name),
                                         listed(std::move(others))));
        }
        if (std::ranges::find(wanted, *found) == wanted.end()) wanted.push_back(*found);
    }
    return wanted;
}

std::size_t findUvMap(const RenderSceneData &scene, std::uint32_t object, const std::string &name) {
    const std::vector<UvMap> &maps = scene.objects[object].mesh->uvMaps;
    const auto found = std::ranges::find_if(maps, [&](const UvMap &map) { return name.empty() || map.name == name; });
    if (found != maps.end()) return static_cast<std::size_t>(found - maps.begin());
    std::vector<std::string> names;
    for (const UvMap &map : maps) names.push_back(map.name);
    const std::string &owner = scene.objects[object].item->name;
    throw InputError(name.empty() ? fmt::format("the object {} has no UV map", inQuotes(owner))
                                  : fmt::format("the object {} has no UV map {}{}", inQuotes(owner), inQuotes(name),
                                                listed(std::move(names))));
}

} // namespace velm::host
