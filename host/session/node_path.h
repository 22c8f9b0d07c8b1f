// Naming a node, or a network, of an open scene.
#pragma once

#include "host/graph/network.h"
#include "host/graph/surface.h"

#include <string>
#include <vector>

namespace velm::host {

// The path to a network: the name of its surface and, for a network inside a node, the names of the nodes to go
// through. In its connections, the network itself has the name of the path's last element.
struct NetworkPath {
    std::string surface;
    std::vector<std::string> nodes; // each holds the network that the next one is in

    // "Clay" or "Clay/Group Node/Dirt", for messages.
    std::string text() const;
};

// A node of a network.
struct NodePath {
    NetworkPath network;
    std::string node; // the node's name, or that of the network itself for its root

    std::string text() const;
};

// The network that a path leads to, from its surface on. InputError, naming the nearest right name, where the path
// leads nowhere, and where a node on the way holds no network. [interface thread; not while rendering]
Network &networkAt(Surface &surface, const NetworkPath &path);

// The node that a path leads to; InputError likewise. [interface thread; not while rendering]
HostNode &nodeAt(Surface &surface, const NodePath &path);

} // namespace velm::host
