// Operations on whole networks, and on the networks that nodes contain. [interface thread; not while rendering]
#pragma once

#include "host/graph/network.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

std::unique_ptr<Network> makeNetwork(); // an empty one

// The nodes of a network and of the networks nested in them, without root nodes, in the order in which they are saved.
std::vector<HostNode *> nodesIn(Network &network);
// The number of instances that a node consists of: itself and those nested in it.
std::size_t instancesIn(const HostNode &node);
// Whether a node is in a network nested in another node, at any depth.
bool isInside(const HostNode &node, const HostNode &other);
// For messages: "the network of Counter, Counter (2)".
std::string namesOf(Network &network);

// The network's saved data in a save state of that mode; nothing if it is larger than the format allows.
std::optional<std::string> saveNetwork(Network &network, int mode);
// Replaces the network by saved data. InputError if it cannot be loaded.
void loadNetwork(Network &network, const std::string &bytes, int mode);

} // namespace velm::host
