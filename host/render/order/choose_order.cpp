#include "host/render/order/choose_order.h"

#include "host/graph/surface.h"
#include "host/render/order/known_nodes.h"

#include <fmt/format.h>

namespace velm::host {
namespace {

// The server of this module that restarts its random stream; null when it has none.
ServerClass *restarterOf(const std::string &module) {
    for (const auto &server : serverList().all()) {
        const KnownNode *known = knownNode(server->name());
        if (known && known->restarts && server->origin() == module) return server.get();
    }
    return nullptr;
}

void addNode(const HostNode &node, NodeTraits &traits) {
    if (!node.server || node.server->number() == kHostServer) return; // one of the host's own
    const std::string &module = node.server->origin();
    const KnownNode *known = knownNode(node.server->name());
    ServerClass *restarter = restarterOf(module);
    if (!known) {
        if (traits.unknownNode.empty()) traits.unknownNode = node.name;
        if (!restarter && traits.unplaceableModule.empty()) traits.unplaceableModule = module;
    }
    // A node that nothing is known of may draw.
    if ((!known || known->draws) && restarter) {
        traits.draw = true;
        traits.restarter = restarter;
    }
    if (known && known->hasMemory) {
        traits.haveMemory = true;
        if (traits.memoryNode.empty()) traits.memoryNode = node.name;
    }
}

void addNetwork(const Network &network, NodeTraits &traits) {
    for (const auto &node : network.nodes()) {
        addNode(*node, traits);
        for (const Network *nested : node->nestedNetworks) addNetwork(*nested, traits);
    }
}

} // namespace

NodeTraits traitsOf(const RenderSceneData &scene) {
    NodeTraits traits;
    for (const RenderSurface &surface : scene.surfaces) addNetwork(surface.surface->network(), traits);
    return traits;
}

OrderChoice chooseOrder(RenderOrder wanted, const NodeTraits &traits) {
    OrderChoice choice{.order = wanted, .needsProbe = false, .reason = {}};
    if (wanted != RenderOrder::automatic) return choice;
    choice.order = RenderOrder::classic;
    if (traits.haveMemory) {
        choice.reason = fmt::format("the node \"{}\" has a memory of earlier evaluations", traits.memoryNode);
    } else if (!traits.unplaceableModule.empty()) {
        choice.reason =
            fmt::format("the random numbers of {}, if it has any, cannot be repeated", traits.unplaceableModule);
    } else {
        choice.order = RenderOrder::repeatable;
        choice.needsProbe = !traits.unknownNode.empty();
    }
    return choice;
}

std::string reasonOfProbe(const NodeTraits &traits) {
    return fmt::format("the same samples came out differently a second time, perhaps because of the node \"{}\"",
                       traits.unknownNode);
}

} // namespace velm::host
