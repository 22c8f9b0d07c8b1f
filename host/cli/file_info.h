// What a file holds that can be rendered.
#pragma once

#include "host/cli/json_output.h"
#include "host/cli/object_parts.h"
#include "host/graph/server_list.h"
#include "host/open/open_file.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace velm::host {

struct NodeInfo {
    // The names of the nodes that contain the node, from the outermost one, and its own: "Outer.Inner". Names that are
    // not plain words are in quotes.
    std::string path;
    std::string server;
    bool isKnown = false; // the server is loaded
};

struct SurfaceInfo {
    std::string name;
    std::string file; // the object file that brings it; empty for a surface that the scene describes
    std::vector<NodeInfo> nodes;
};

struct ObjectInfo {
    std::string name;
    std::string shape; // "mesh", "plane" and so on
    std::string file;  // of a mesh
    std::size_t points = 0, triangles = 0, polygons = 0;
    std::vector<std::string> materials, uvMaps, colourMaps, weightMaps;
    ObjectParts parts;                // with layers only if the file is a LightWave object
    std::vector<std::string> notes{}; // on what is drawn otherwise, or not at all: a line each
};

struct FileInfo {
    const FileReader *reader = nullptr; // not null in a result
    SceneDescription scene;             // as it was read
    std::vector<ObjectInfo> objects;
    std::vector<SurfaceInfo> surfaces;
    std::vector<Warning> warnings; // about parts of the file that are not in the scene
    Bounds bounds;                 // of all objects; infinite the wrong way round where there are none
};

// Reads a file with its meshes and networks. `subdivision` replaces the level of all meshes. A node is known whose
// server is in the list. InputError for what cannot be read. [interface thread; not while rendering]
FileInfo infoOf(const std::string &file, const SearchPath &path, std::optional<int> subdivision, ServerList &servers);

void printInfo(const FileInfo &info, std::ostream &out); // a line for each thing
Json infoJson(const FileInfo &info);

} // namespace velm::host
