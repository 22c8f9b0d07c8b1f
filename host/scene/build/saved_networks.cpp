#include "host/scene/build/saved_networks.h"

#include "host/base/names.h"
#include "host/files/network_block.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"

#include <algorithm>
#include <fmt/format.h>

namespace velm::host {

namespace {

class PlaceholderWarnings {
  public:
    PlaceholderWarnings(const SurfaceDescription &surface, Warnings &warnings)
        : surface_(surface), warnings_(warnings) {}

    void addAll(const Network &network, const std::string &path) {
        for (const auto &input : network.root().inputs)
            if (input->isForeign) addInput(network, *input, path);
        for (const auto &node : network.nodes()) {
            const std::string nodePath = pathTo(pathTo(path, "nodes"), node->name);
            if (node->placeholder) addNode(*node, nodePath);
            for (const Network *inside : node->nestedNetworks) addAll(*inside, pathTo(nodePath, "network"));
        }
    }

  private:
    void addNode(const HostNode &node, const std::string &path) {
        const std::string server = inQuotes(node.server->name());
        warnings_.add({.location = locationOf(surface_),
                       .path = path,
                       .brief = "no node " + server,
                       .message = fmt::format("surface {}, node {}: there is no node {} here; its data are preserved, "
                                              "and its colours are magenta",
                                              inQuotes(surface_.name), inQuotes(node.name), server)});
    }

    void addInput(const Network &network, const HostInput &input, const std::string &path) {
        warnings_.add(
            {.location = locationOf(surface_),
             .path = path,
             .brief = fmt::format("no input {} of a surface", inQuotes(input.name)),
             .message = fmt::format("surface {}: {} has no input {} here; its connection is preserved, but "
                                    "not evaluated",
                                    inQuotes(surface_.name), inQuotes(network.root().name), inQuotes(input.name))});
    }

    const SurfaceDescription &surface_;
    Warnings &warnings_;
};

} // namespace

SourceLocation locationOf(const SurfaceDescription &surface) {
    return surface.saved.file.empty() ? surface.location : SourceLocation{.file = surface.saved.file, .line = 0};
}

HostNode &makeDescribed(const NodeDescription &node, Network &network, ServerList &servers) {
    HostNode &made = servers.find(node.server) || node.kind.empty()
                         ? network.addNode(servers.get(node.server), node.name)
                         : network.addPlaceholder(std::make_shared<Placeholder>(node.server, node.kind), node.name);
    if (!node.data.empty()) loadSavedData(made, node.data, fmt::format("the data of the node {}", inQuotes(node.name)));
    network.setLook(made, node.look);
    return made;
}

void setView(Network &network, const NetworkView &view) {
    network.setView(view.location, static_cast<float>(view.zoom));
    network.setState(view.disabled);
    network.setLook(network.root(), view.root);
}

void connectDescribed(Network &network, const NetworkDescription &description,
                      const ConnectionDescription &connection) {
    const auto &[fromNode, output, toNode, input, location] = connection;
    const HostNode &to = network.node(toNode);
    const bool isOther = &to == &network.root() && std::ranges::count(description.otherInputs, input) > 0;
    if (isOther || to.placeholder || network.node(fromNode).placeholder)
        network.connectAsSaved(fromNode, output, toNode, input);
    else
        network.connect(fromNode, output, toNode, input);
}

void loadSaved(Surface &surface, const SurfaceDescription &description) {
    const SavedNetwork &saved = description.saved;
    // Before the network is loaded: a setting can be applied only while nothing is connected to its input, and what the
    // network holds of the root overrides these values.
    for (SettingDescription setting : description.settings) {
        setting.location.file = saved.file;
        surface.setDefault(setting);
    }
    surface.network().root().savesData = false; // unless the network has data of the root
    if (!saved.block.empty()) loadNetwork(surface, saved.block, saved.file, saved.offset);
}

void warnOfPlaceholders(Surface &surface, const SurfaceDescription &description, Warnings &warnings) {
    PlaceholderWarnings(description, warnings).addAll(surface.network(), pathTo("surfaces", description.name));
}

} // namespace velm::host
