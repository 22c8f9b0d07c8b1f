#include "host/session/node_path.h"

#include "host/base/error.h"
#include "host/base/names.h"

#include <fmt/format.h>

namespace velm::host {

std::string NetworkPath::text() const {
    std::string text = surface;
    for (const std::string &node : nodes) text += '/' + node;
    return text;
}

std::string NodePath::text() const { return network.text() + '/' + node; }

Network &networkAt(Surface &surface, const NetworkPath &path) {
    Network *network = &surface.network();
    for (const std::string &name : path.nodes) {
        HostNode &node = network->node(name);
        if (node.nestedNetworks.empty())
            throw InputError(fmt::format("the node {} holds no network", inQuotes(path.surface + '/' + name)));
        network = node.nestedNetworks.front();
    }
    return *network;
}

HostNode &nodeAt(Surface &surface, const NodePath &path) { return networkAt(surface, path.network).node(path.node); }

} // namespace velm::host
