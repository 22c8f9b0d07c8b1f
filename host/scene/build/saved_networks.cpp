#include "host/scene/build/saved_networks.h"

#include "host/base/names.h"
#include "host/files/network_block.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"

#include <algorithm>
#include <fmt/format.h>

namespace velm::host {

namespace {

class StandInWarnings {
  public:
    StandInWarnings(const SurfaceDescription &surface, Warnings &warnings) : surface_(surface), warnings_(warnings) {}

    void addAll(const Network &editor, const std::string &path) {
        for (const auto &input : editor.root().inputs)
            if (input->isForeign) addInput(editor, *input, path);
        for (const auto &node : editor.nodes()) {
            const std::string nodePath = pathTo(pathTo(path, "nodes"), node->name);
            if (node->placeholder) addNode(*node, nodePath);
            for (const Network *inside : node->nestedNetworks) addAll(*inside, pathTo(nodePath, "network"));
        }
    }

  private:
    SourceLocation location() const {
        return surface_.saved.file.empty() ? surface_.location : SourceLocation{.file = surface_.saved.file, .line = 0};
    }

    void addNode(const HostNode &node, const std::string &path) {
        const std::string server = velm::host::quoted(node.server->name());
        warnings_.add(
            {.location = location(),
             .path = path,
             .brief = "no node " + server,
             .message = fmt::format("surface {}, node {}: there is no node {} here; it is kept as it is, and "
                                    "its colours are magenta",
                                    velm::host::quoted(surface_.name), velm::host::quoted(node.name), server)});
    }

    void addInput(const Network &editor, const HostInput &input, const std::string &path) {
        warnings_.add({.location = location(),
                       .path = path,
                       .brief = fmt::format("no input {} of a surface", velm::host::quoted(input.name)),
                       .message = fmt::format("surface {}: {} has no input {} here; what is connected to it is kept, "
                                              "and not evaluated",
                                              velm::host::quoted(surface_.name), velm::host::quoted(editor.root().name),
                                              velm::host::quoted(input.name))});
    }

    const SurfaceDescription &surface_;
    Warnings &warnings_;
};

} // namespace

HostNode &makeDescribed(const NodeDescription &node, Network &editor, ServerList &servers) {
    HostNode &made = servers.find(node.server) || node.kind.empty()
                         ? editor.addNode(servers.get(node.server), node.name)
                         : editor.addPlaceholder(std::make_shared<Placeholder>(node.server, node.kind), node.name);
    if (!node.data.empty())
        loadSavedData(made, node.data, fmt::format("the data of the node {}", velm::host::quoted(node.name)));
    editor.setLook(made, node.look);
    return made;
}

void showAs(Network &editor, const NetworkView &view) {
    editor.setView(view.location, static_cast<float>(view.zoom));
    editor.setState(view.disabled);
    editor.setLook(editor.root(), view.root);
}

void connectDescribed(Network &editor, const NetworkDescription &network, const ConnectionDescription &one) {
    const HostNode &to = editor.node(one.toNode);
    const bool isOther = &to == &editor.root() && std::ranges::count(network.otherInputs, one.input) > 0;
    if (isOther || to.placeholder || editor.node(one.fromNode).placeholder)
        editor.connectAsSaved(one.fromNode, one.output, one.toNode, one.input);
    else
        editor.connect(one.fromNode, one.output, one.toNode, one.input);
}

void loadSaved(Surface &surface, const SurfaceDescription &description) {
    const SavedNetwork &saved = description.saved;
    // A setting can be made only while nothing is connected to it; what the network holds of the root comes over it.
    for (SettingDescription setting : description.settings) {
        setting.location.file = saved.file;
        surface.setDefault(setting);
    }
    surface.network().root().savesData = false; // until the network says otherwise
    if (!saved.block.empty()) loadNetwork(surface, saved.block, saved.file, saved.offset);
}

void warnOfStandIns(Surface &surface, const SurfaceDescription &description, Warnings &warnings) {
    StandInWarnings(description, warnings).addAll(surface.network(), pathTo("surfaces", description.name));
}

} // namespace velm::host
