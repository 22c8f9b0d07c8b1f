// The text of a connection: "Node.Output -> Node.Input".
#pragma once

#include "host/scene/format/description.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// What a network ends in, and how messages speak of it. It goes by the name of what holds the network.
struct NetworkRoot {
    std::string name;
    const char *nameOf;       // "... has the name of its surface"
    const char *feedsNothing; // "... is the surface itself, which has no outputs"
};
NetworkRoot surfaceRoot(const std::string &surface);
NetworkRoot holderRoot(const std::string &node); // of a node that holds a network

// Takes a connection apart. `nodes` are the names that may stand before the dots, the root's among them; names of
// nodes and of their inputs and outputs may contain blanks and dots, so that an end is parted after the longest name
// that fits it. Nothing comes out of the root. Throws InputError, with the place and the
// nearest right name. Whether the output and the input exist is known only when the nodes are made.
ConnectionDescription parseConnection(std::string_view text, const std::vector<std::string> &nodes,
                                      const NetworkRoot &root, const SourceLocation &location);

} // namespace velm::host
