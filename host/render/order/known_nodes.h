// What the renderer knows about the nodes of modules: how their results depend on earlier evaluations. This is the only
// place that names nodes of a module.
#pragma once

#include <string_view>

namespace velm::host {

struct KnownNode {
    std::string_view server;
    bool draws;     // its evaluation takes words from the module's random stream
    bool hasMemory; // its results depend on earlier evaluations
    bool restarts;  // creating one restarts the module's random stream, and each evaluation takes one word of it
};

// By the name of its server; null for a node that nothing is known of.
const KnownNode *knownNode(std::string_view server);

} // namespace velm::host
