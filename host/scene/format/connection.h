// The text of a connection: "Node.Output -> Node.Input".
#pragma once

#include "host/scene/format/description.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace velm::host {

// The root of a network, and the phrases that messages use for it. Its name is that of the surface or node that owns
// the network.
struct NetworkRoot {
    std::string name;
    const char *nameOf;       // "... has the name of its surface"
    const char *feedsNothing; // "... is the surface itself, which has no outputs"
};
NetworkRoot surfaceRoot(const std::string &surface);
NetworkRoot ownerRoot(const std::string &node); // of the network inside a node

// The names of the nodes of a network, the root's among them.
class NodeNameSet {
  public:
    explicit NodeNameSet(std::vector<std::string> names) : all_(std::move(names)), set_(all_.begin(), all_.end()) {}

    bool has(std::string_view name) const { return set_.count(std::string(name)) != 0; }
    const std::vector<std::string> &all() const { return all_; } // in the order of the file

  private:
    std::vector<std::string> all_;
    std::unordered_set<std::string> set_;
};

// Parses a connection. `nodes` are the names that may stand before the dots. Names of nodes, and
// of their inputs and outputs, may contain blanks and dots; the longest name that fits an end is the node's. Throws
// InputError, with the location and the nearest right name, for a text of another form, for an unknown node, and for a
// connection that starts at the root. Whether the output and the input exist is known only when the nodes are made.
ConnectionDescription parseConnection(std::string_view text, const NodeNameSet &nodes, const NetworkRoot &root,
                                      const SourceLocation &location);

// The inverse of parseConnection.
std::string connectionText(const ConnectionDescription &connection);

} // namespace velm::host
