// The surfaces of object files, as descriptions and back.
#pragma once

#include "host/base/warnings.h"
#include "host/files/object_file.h"
#include "host/graph/server_list.h"
#include "host/scene/build/describe_network.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

#include <map>
#include <string>
#include <vector>

namespace velm::host {

// The surfaces of an object, with their networks as saved blocks and their own values as settings. Values that an
// envelope drives are told in `animated`, by surface and sub-chunk; what they are without it counts. InputError with
// the byte's offset.
std::vector<SurfaceDescription> surfacesOf(const ObjectFile &object, std::vector<std::string> *animated = nullptr);

// The images of an object. Objects name them as they were called on the machine that wrote them: a file is looked for
// under that name, and by its last part beside the object and along the path. An image that is not there says where it
// was looked for.
std::vector<ImageDescription> imagesOf(const ObjectFile &object, const SearchPath &path);

// What `unpack` is at: descriptions, and what each node of the object saved, by the way to it.
struct UnpackedSurfaces {
    std::vector<ImageDescription> images;
    std::vector<SurfaceDescription> surfaces;
    std::map<std::string, std::string> data;
};

// Describes the surfaces of an object that have a network. [interface thread; not while rendering]
UnpackedSurfaces unpackSurfaces(const ObjectFile &object, const SearchPath &path, ServerList &servers,
                                Warnings &warnings);

// Makes the described surfaces and gives every node that would not be saved as it was its data from the object; one
// that has them already goes by its data alone. True when there was such a node. Nodes may number what they make, so
// that the module must have made nothing before: load it anew. [interface thread; not while rendering]
bool completeUnpacked(UnpackedSurfaces &unpacked, ServerList &servers);

// What packing did with a surface.
struct PackedSurface {
    std::string name;
    std::size_t nodes = 0; // beside the root
    std::size_t bytes = 0; // of the network
    bool isNew = false;    // the object had no such surface
    bool isUnchanged = false;
};

// Writes the networks of a scene's surfaces into the object: a surface that it has keeps all but its network; one that
// it does not have is added. A surface's own values go into the network where they are other than the object's.
// InputError for a network that is too large. [interface thread; not while rendering]
std::vector<PackedSurface> packSurfaces(ObjectFile &object, const SceneDescription &scene, const SceneSurfaces &built,
                                        const UsualSettings &usual);

} // namespace velm::host
