// Networks in object files and scene files, loaded into live networks.
#pragma once

#include "host/files/scene_text.h"
#include "host/graph/surface.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

// Replaces a surface's network by the one in a block of an object file, as ObjectFile::network gives it. `file` and
// `offset` say where the block is, for errors. Throws InputError with the byte's offset.
// [interface thread; not while rendering]
void loadNetwork(Surface &surface, std::string_view block, const std::string &file, std::size_t offset);

// The network in a block `{ Nodal_Block` of a scene, such as that of an object's displacement; never null. Its root is
// a placeholder for the server that the block names; so are nodes whose server is missing. Throws InputError with the
// line. [interface thread; not while rendering]
std::unique_ptr<Network> readNetwork(const SceneText &scene, const SceneBlock &block);

// The network as such a block, with line ends "\n", for SceneText::setBlock. An unchanged network gives exactly the
// bytes that were read, if the block had the usual layout. InputError when a node cannot be saved.
std::string writeNetwork(Network &network);

} // namespace velm::host
