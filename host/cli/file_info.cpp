#include "host/cli/file_info.h"

#include "host/io/files.h"
#include "host/render/motion/pose.h"
#include "host/scene/convert/object_surfaces.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>
#include <variant>

namespace velm::host {

namespace {

const char *nameOf(const MeshFile &) { return "mesh"; }
const char *nameOf(const PlaneShape &) { return "plane"; }
const char *nameOf(const BoxShape &) { return "box"; }
const char *nameOf(const SphereShape &) { return "sphere"; }

ObjectInfo objectInfo(const ObjectDescription &object, const Mesh &mesh) {
    ObjectInfo info;
    info.name = object.name;
    info.shape = std::visit([](const auto &shape) { return nameOf(shape); }, object.shape);
    if (const auto *file = std::get_if<MeshFile>(&object.shape)) {
        info.file = file->file;
        info.parts = partsOfObject(file->file);
    }
    info.parts.parts.insert(info.parts.parts.end(), mesh.parts.begin(), mesh.parts.end());
    info.points = mesh.points.size();
    info.triangles = mesh.triangles.size();
    info.polygons = mesh.polygonCount;
    std::ranges::copy_if(mesh.materials, std::back_inserter(info.materials),
                         [](const std::string &name) { return !name.empty(); });
    for (const UvMap &map : mesh.uvMaps) info.uvMaps.push_back(map.name);
    for (const VertexMap &map : mesh.vertexMaps)
        (map.isWeight() ? info.weightMaps : info.colourMaps).push_back(map.name);
    for (const MeshWarning &warning : mesh.warnings) info.notes.push_back(warning.message);
    return info;
}

void addNodes(const NetworkDescription &network, const std::string &path, const ServerList &servers,
              std::vector<NodeInfo> &nodes) {
    for (const NodeDescription &node : network.nodes) {
        const std::string own = pathTo(path, node.name);
        nodes.push_back({.path = own, .server = node.server, .isKnown = servers.find(node.server) != nullptr});
        for (const NetworkDescription &inside : node.network) addNodes(inside, own, servers, nodes);
    }
}

// The networks of object files, by file and surface. Reads each file once.
class SavedNetworks {
  public:
    SavedNetworks(const SearchPath &path, ServerList &servers) : path_(path), servers_(servers) {}

    const NetworkDescription &of(const SavedNetwork &saved) {
        if (read_.insert(saved.file).second) {
            const ObjectFile object(readFile(saved.file), saved.file);
            Warnings ignored(Warnings::Policy::goOn); // of unknown servers, which the result names
            for (SurfaceDescription &surface : unpackSurfaces(object, path_, servers_, ignored).surfaces)
                networks_[{saved.file, surface.name}] = std::move(surface.network);
        }
        return networks_[{saved.file, saved.name}];
    }

  private:
    const SearchPath &path_;
    ServerList &servers_;
    std::set<std::string> read_; // files
    std::map<std::pair<std::string, std::string>, NetworkDescription> networks_;
};

} // namespace

FileInfo infoOf(const std::string &file, const SearchPath &path, std::optional<int> subdivision, ServerList &servers) {
    FileInfo info;
    info.reader = &readerOf(file);
    MeshCache meshes;
    info.scene = info.reader->read({.reader = *info.reader,
                                    .file = file,
                                    .path = path,
                                    .overrides = {},
                                    .cameras = Cameras::optional,
                                    .warnings = info.warnings,
                                    .meshes = meshes});
    if (subdivision) setSubdivision(*subdivision, info.scene);
    if (!info.scene.objects.empty()) info.bounds = boundsOf(info.scene, meshes);
    const ScenePose pose = poseAt(info.scene, startTime(info.scene.render));
    for (std::size_t i = 0; i < info.scene.objects.size(); ++i) {
        const ObjectDescription &object = info.scene.objects[i];
        info.objects.push_back(objectInfo(object, meshes.get(object.shape, pose.ofMesh(i))));
    }
    SavedNetworks saved(path, servers);
    for (const SurfaceDescription &surface : info.scene.surfaces) {
        SurfaceInfo &one = info.surfaces.emplace_back();
        one.name = surface.name;
        one.file = surface.saved.file;
        const bool isSaved = surface.network.nodes.empty() && !surface.saved.block.empty();
        addNodes(isSaved ? saved.of(surface.saved) : surface.network, "", servers, one.nodes);
    }
    return info;
}

} // namespace velm::host
