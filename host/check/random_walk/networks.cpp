#include "host/check/random_walk/networks.h"

#include "host/base/error.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

namespace velm::host {

namespace {

void addNodes(Network &network, std::vector<HostNode *> &nodes) {
    for (const auto &node : network.nodes()) {
        nodes.push_back(node.get());
        for (Network *inside : node->nestedNetworks) addNodes(*inside, nodes);
    }
}

} // namespace

std::unique_ptr<Network> makeNetwork() { return std::make_unique<Network>("Walk", "Walk", nullptr, nullptr); }

std::vector<HostNode *> nodesIn(Network &network) {
    std::vector<HostNode *> nodes;
    addNodes(network, nodes);
    return nodes;
}

std::size_t instancesIn(const HostNode &node) {
    std::size_t count = 1;
    for (Network *inside : node.nestedNetworks) count += nodesIn(*inside).size();
    return count;
}

bool isInside(const HostNode &node, const HostNode &other) {
    const HostNode *owner = node.network->ownerNode();
    while (owner && owner != &other) owner = owner->network->ownerNode();
    return owner;
}

std::string namesOf(Network &network) {
    std::string names;
    for (const HostNode *node : nodesIn(network)) names += (names.empty() ? "" : ", ") + node->name;
    return "the network of " + names;
}

std::optional<std::string> saveNetwork(Network &network, int mode) {
    StateWriter writer(mode);
    try {
        network.save(*writer.state());
        return writer.finish();
    } catch (const InputError &) {
        return {};
    }
}

void loadNetwork(Network &network, const std::string &bytes, int mode) {
    StateReader reader(mode, bytes, "saved");
    network.load(*reader.state());
}

} // namespace velm::host
