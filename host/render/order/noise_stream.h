// Puts a module's random stream to a known place.
//
// A module has one stream for all nodes, and no function that seeds it. But creating a node of a certain kind restarts
// it, and each evaluation of that node takes one word. So the stream can be put anywhere through the plug-in interface
// alone, at the cost of one evaluation for each word that is skipped.
#pragma once

#include "host/graph/network.h"

#include <cstdint>
#include <optional>

namespace velm::host {

class NoiseStream {
  public:
    // `restarter` is a server whose nodes restart the stream (see known_nodes.h).
    explicit NoiseStream(ServerClass &restarter) : restarter_(restarter) {}

    // Restarts the stream and skips this many words. InputError when the module cannot make the node.
    // [interface thread; not while rendering]
    void place(std::uint32_t words);

  private:
    ServerClass &restarter_;
    std::optional<Network> network_; // whose root is the node
};

} // namespace velm::host
