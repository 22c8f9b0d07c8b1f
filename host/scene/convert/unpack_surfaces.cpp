// From the networks of an object to descriptions that give them back to the byte.
#include "host/base/names.h"
#include "host/graph/node_data.h"
#include "host/image/image.h"
#include "host/scene/convert/object_surfaces.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>

namespace velm::host {

namespace {

// Calls `act` with each node of a network, and of the networks inside its nodes, and with the node's path.
void forEachNode(const Network &network, const std::string &path,
                 const std::function<void(const HostNode &, const std::string &)> &act) {
    for (const auto &node : network.nodes()) {
        const std::string nodePath = pathTo(path, node->name);
        act(*node, nodePath);
        for (const Network *inside : node->nestedNetworks) forEachNode(*inside, nodePath, act);
    }
}

// What each node of the surfaces saves, by the node's path.
std::map<std::string, std::string> dataOf(const SceneSurfaces &built, const std::vector<SurfaceDescription> &surfaces) {
    std::map<std::string, std::string> data;
    for (const SurfaceDescription &surface : surfaces)
        forEachNode(built.surface(surface.name)->network(), pathTo("", surface.name),
                    [&](const HostNode &node, const std::string &path) { data[path] = savedData(node); });
    return data;
}

// Completes descriptions with data; see completeUnpacked. The data of a node that holds a network contain those of the
// nodes inside. Such a node therefore gets data of its own only when no node inside it was changed.
class Completion {
  public:
    // By the paths of nodes: the data that each saved in the object, and the data that it saves when it is created from
    // the descriptions.
    Completion(const std::map<std::string, std::string> &wanted, const std::map<std::string, std::string> &made)
        : wanted_(wanted), made_(made) {}

    // True when a node was changed.
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
                                Warnings &warnings, UnpackTextures textures) {
    const DefaultSettings defaults(servers);
    SceneDescription scene;
    scene.file = object.name();
    scene.images = imagesOf(object, path);
    for (SurfaceDescription &surface : surfacesOf(object).surfaces) {
        if (textures == UnpackTextures::no) surface.network = {};
        if (surface.saved.block.empty() && surface.network.nodes.empty()) continue;
        if (std::ranges::count(scene.surfaces, surface.name, &SurfaceDescription::name) > 0)
            throw InputError(fmt::format("{}: there are two surfaces {}", object.name(), inQuotes(surface.name)));
        scene.surfaces.push_back(std::move(surface));
    }
    const SceneSurfaces built(scene, servers, &warnings);
    UnpackedSurfaces result;
    result.data = dataOf(built, scene.surfaces);
    // The images of the object, and others that its nodes name.
    for (const HostImage *image = ImageList::instance().first(); image; image = ImageList::next(image))
        result.images.push_back(
            {.name = image->name, .file = image->file, .sequence = image->sequence, .filters = image->filters});
    for (const SurfaceDescription &surface : scene.surfaces)
        result.surfaces.push_back(describeSurface(*built.surface(surface.name), defaults));
    return result;
}

bool completeUnpacked(UnpackedSurfaces &unpacked, ServerList &servers) {
    SceneDescription scene;
    scene.images = unpacked.images;
    scene.surfaces = unpacked.surfaces;
    Warnings ignored(Warnings::Policy::goOn); // unpackSurfaces has reported them already
    const SceneSurfaces built(scene, servers, &ignored);
    const std::map<std::string, std::string> made = dataOf(built, unpacked.surfaces);
    Completion completion(unpacked.data, made);
    bool any = false;
    for (SurfaceDescription &surface : unpacked.surfaces)
        any |= completion.complete(surface.network, pathTo("", surface.name));
    return any;
}

} // namespace velm::host
