// What walks do with networks as wholes, and with what stands inside nodes. [interface thread; not while rendering]
#pragma once

#include "host/graph/network.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

std::unique_ptr<Network> makeNetwork();

// The nodes of a network and of the networks inside them, without roots, in the order in which they are saved.
std::vector<HostNode *> nodesIn(Network &network);
// A node and those inside it.
std::size_t instancesIn(const HostNode &node);
// Whether a node stands in a network inside another one, at any depth.
bool isInside(const HostNode &node, const HostNode &other);
// "the network of Counter, Counter (2)"
std::string namesOf(Network &network);

// Nothing when it is larger than the form allows.
std::optional<std::string> saveNetwork(Network &network, int mode);
// InputError when it cannot be loaded.
void loadNetwork(Network &network, const std::string &bytes, int mode);

} // namespace velm::host
