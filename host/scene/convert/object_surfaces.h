// The surfaces of object files, as descriptions and back.
#pragma once

#include "host/base/warnings.h"
#include "host/files/object_file.h"
#include "host/graph/server_list.h"
#include "host/object/losses.h"
#include "host/scene/build/describe_network.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// A value of a surface whose envelope is not in the surface's settings.
struct UnsetEnvelope {
    std::string what;         // "the value COLR of the surface \"Clay\""
    bool isInNetwork = false; // the network that is made from the texture layers has the envelope
};

// The surfaces of an object, and their features that are not supported.
struct ObjectSurfaces {
    std::vector<SurfaceDescription> surfaces;
    Losses losses;
    std::vector<UnsetEnvelope> animated;
};

// The surfaces of an object: their networks as saved blocks, their own values as settings, and the texture layers of
// those whose networks have no nodes as descriptions of nodes, which name the images as imagesOf does. Envelopes become
// keys. InputError with the byte's offset, and for more than a million keys.
// [interface thread; not while rendering]
ObjectSurfaces surfacesOf(const ObjectFile &object);

// The same for an object of LightWave 5 or earlier, given by its bytes: see host/object/old_surfaces.h. Its surfaces
// have no networks of their own.
ObjectSurfaces surfacesOfOldObject(std::string_view bytes, const std::string &file);

// A surface that polygons of the object have, but that the file does not describe: plain grey, flat and one-sided.
SurfaceDescription undescribedSurface(const std::string &name, const std::string &file);

// The images of an object. The object has the file names of the machine that wrote it. A file is looked for under that
// name, then by the name's last part, beside the object and along the path. The description of an image that was not
// found says where it was looked for.
std::vector<ImageDescription> imagesOf(const ObjectFile &object, const SearchPath &path);
std::vector<ImageDescription> imagesOfOldObject(std::string_view bytes, const std::string &file,
                                                const SearchPath &path);

// Surfaces of an object as descriptions, with the data that each node has in the object, by the node's path.
struct UnpackedSurfaces {
    std::vector<ImageDescription> images;
    std::vector<SurfaceDescription> surfaces;
    std::map<std::string, std::string> data;
};

// Whether the nodes that represent texture layers are unpacked, too.
enum class UnpackTextures { no, yes };

// Describes the surfaces of an object that have a network. InputError for a damaged network, and for two surfaces of
// one name. [interface thread; not while rendering]
UnpackedSurfaces unpackSurfaces(const ObjectFile &object, const SearchPath &path, ServerList &servers,
                                Warnings &warnings, UnpackTextures textures = UnpackTextures::no);

// Builds the described surfaces and compares the data that each node saves with the data in the object. A node whose
// data differ gets those of the object besides its settings; a node that has them already loses its settings. True when
// anything changed: call it again. Nodes may number the instances that they create, so load the module anew before each
// call. [interface thread; not while rendering]
bool completeUnpacked(UnpackedSurfaces &unpacked, ServerList &servers);

// What packing did to a surface.
struct PackedSurface {
    std::string name;
    std::size_t nodes = 0; // without the root
    std::size_t bytes = 0; // size of the network
    bool isNew = false;    // the object had no such surface
    bool isUnchanged = false;
};

// Puts the networks of a scene's surfaces into the object. `surfaces` are those of the scene. A surface that the object
// has keeps everything but its network; one that it does not have is added. Where a surface's own values differ from
// those in the object, they are saved in the network. InputError when a node cannot be saved. [interface thread; not
// while rendering]
std::vector<PackedSurface> packSurfaces(ObjectFile &object, const SceneDescription &scene,
                                        const SceneSurfaces &surfaces, const DefaultSettings &defaults);

} // namespace velm::host
