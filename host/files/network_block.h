// Networks in object files and scene files, live.
#pragma once

#include "host/files/scene_text.h"
#include "host/graph/surface.h"

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

// Gives a surface the network in a block of an object file, as ObjectFile::network has it; `offset` is its place in the
// file. Throws InputError with the byte's offset. [interface thread; not while rendering]
void loadNetwork(Surface &surface, std::string_view block, const std::string &file, std::size_t offset);

// The network in a block `{ Nodal_Block` of a scene. Its root is a stand-in of the kind that the block tells, as of an
// object's displacement; nodes whose server is there are live. Throws InputError with the line.
// [interface thread; not while rendering]
std::unique_ptr<Network> readNetwork(const SceneText &scene, const SceneBlock &block);

// The network as such a block, with line ends "\n", for SceneText::setBlock: to the byte what was read, as long as
// nothing was changed and the block was laid out as all programs do. InputError when a node cannot be saved.
std::string writeNetwork(Network &network);

} // namespace velm::host
