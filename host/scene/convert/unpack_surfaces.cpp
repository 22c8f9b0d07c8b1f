// From the networks of an object to a description that gives them back to the byte.
#include "host/base/names.h"
#include "host/graph/node_data.h"
#include "host/image/image.h"
#include "host/scene/convert/object_surfaces.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>

namespace velm::host {

namespace {

// Calls `act` with each node of a network, and of those inside its nodes, and the way to it.
void forEachNode(const Network &editor, const std::string &path,
                 const std::function<void(const HostNode &, const std::string &)> &act) {
    for (const auto &node : editor.nodes()) {
        const std::string nodePath = pathTo(path, node->name);
        act(*node, nodePath);
        for (const Network *inside : node->nestedNetworks) forEachNode(*inside, nodePath, act);
    }
}

std::map<std::string, std::string> dataOf(const SceneSurfaces &built, const std::vector<SurfaceDescription> &surfaces) {
    std::map<std::string, std::string> data;
    for (const SurfaceDescription &surface : surfaces)
        forEachNode(built.surface(surface.name)->network(), pathTo("", surface.name),
                    [&](const HostNode &node, const std::string &path) { data[path] = savedData(node); });
    return data;
}

// A node that holds a network differs when a node inside does; it needs data of its own only when none of them does.
class Completion {
  public:
    Completion(const std::map<std::string, std::string> &wanted, const std::map<std::string, std::string> &made)
        : wanted_(wanted), made_(made) {}

    bool complete(NetworkDescription &network, const std::string &path) {
        bool any = false;
        for (NodeDescription &node : network.nodes) any |= complete(node, pathTo(path, node.name));
        return any;
    }

  private:
    bool complete(NodeDescription &node, const std::string &path) {
        bool inside = false;
        for (NetworkDescription &network : node.network) inside |= complete(network, path);
        if (inside) return true;
        const auto wanted = wanted_.find(path), made = made_.find(path);
        if (wanted == wanted_.end() || (made != made_.end() && made->second == wanted->second)) return false;
        if (node.data.empty() && node.network.empty()) {
            node.data = wanted->second;
            return !node.data.empty();
        }
        const bool changes = node.data != wanted->second || !node.settings.empty() || !node.network.empty();
        node.data = wanted->second;
        node.settings.clear();
        node.network.clear();
        return changes;
    }

    const std::map<std::string, std::string> &wanted_, &made_;
};

} // namespace

UnpackedSurfaces unpackSurfaces(const ObjectFile &object, const SearchPath &path, ServerList &servers,
                                Warnings &warnings) {
    const UsualSettings usual(servers);
    SceneDescription scene;
    scene.file = object.name();
    scene.images = imagesOf(object, path);
    for (SurfaceDescription &surface : surfacesOf(object)) {
        if (surface.saved.block.empty()) continue;
        if (std::ranges::count(scene.surfaces, surface.name, &SurfaceDescription::name) > 0)
            throw InputError(
                fmt::format("{}: there are two surfaces {}", object.name(), velm::host::quoted(surface.name)));
        scene.surfaces.push_back(std::move(surface));
    }
    const SceneSurfaces built(scene, servers, &warnings);
    UnpackedSurfaces result;
    result.data = dataOf(built, scene.surfaces);
    // Those of the object, and what nodes name besides.
    for (const HostImage *image = ImageList::instance().first(); image; image = ImageList::next(image))
        result.images.push_back({.name = image->name, .file = image->file});
    for (const SurfaceDescription &surface : scene.surfaces)
        result.surfaces.push_back(describeSurface(*built.surface(surface.name), usual));
    return result;
}

bool completeUnpacked(UnpackedSurfaces &unpacked, ServerList &servers) {
    SceneDescription scene;
    scene.images = unpacked.images;
    scene.surfaces = unpacked.surfaces;
    Warnings told(Warnings::Policy::goOn); // which unpackSurfaces has told already
    const SceneSurfaces built(scene, servers, &told);
    const std::map<std::string, std::string> made = dataOf(built, unpacked.surfaces);
    Completion completion(unpacked.data, made);
    bool any = false;
    for (SurfaceDescription &surface : unpacked.surfaces)
        any |= completion.complete(surface.network, pathTo("", surface.name));
    return any;
}

} // namespace velm::host
