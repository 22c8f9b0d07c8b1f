// The nodes that take part in a random walk, and which of their results can be compared.
#pragma once

#include "host/check/watch/watch.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// A node class that takes part.
struct NodeSetEntry {
    ServerClass *server;  // in the server list, which owns it
    int index;            // among the module's nodes
    bool isDeterministic; // gives the same results each time
    bool isIndependent;   // deterministic, whichever other instances are created and destroyed
};
using NodeSet = std::vector<NodeSetEntry>;

// Finds out by experiments with random settings which of the named nodes are deterministic and independent. The result
// has two letters for each name in order, 'y' or 'n', so that it can be handed to another process. Creates and destroys
// instances of all the module's nodes. [interface thread; not while rendering]
std::string classifyNodes(const WatchedServers &servers, const std::vector<std::string> &names, std::uint64_t seed);

// The set of the named nodes. `classes` is the result of classifyNodes for the same names.
NodeSet makeNodeSet(const WatchedServers &servers, const std::vector<std::string> &names, const std::string &classes);

} // namespace velm::host
