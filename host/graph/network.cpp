#include "host/graph/network.h"

#include "host/animation/channel.h"
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/guard/module_call.h"

#include <fmt/format.h>

#include <utility>

namespace velm::host {

bool Network::contains(const Network &other) const {
    const Network *at = &other;
    while (at != this && at->ownerNode_) at = at->ownerNode_->network;
    return at == this;
}

HostNode *Network::findNode(std::string_view wanted) const { return names_.find(wanted); }

HostNode &Network::node(std::string_view wanted) const {
    if (HostNode *found = findNode(wanted)) return *found;
    std::vector<std::string> known{root_->name};
    for (const auto &one : nodes_) known.push_back(one->name);
    throw InputError(fmt::format("no node {} in {}{}", inQuotes(wanted), inQuotes(name_), suggestion(wanted, known)));
}

void Network::rename(HostNode &node, std::string_view name) {
    assertInterface();
    const std::string before = node.name;
    giveName(node, name);
    if (node.name != before) observers_.notify([&](NetworkObserver &observer) { observer.nodeRenamed(node, before); });
    changed();
}

void Network::giveName(HostNode &node, std::string_view wanted) {
    names_.remove(node);
    node.name = names_.unique(wanted);
    names_.add(node);
}

std::vector<HostNode *> Network::all() const {
    std::vector<HostNode *> every{root_.get()};
    for (const auto &node : nodes_) every.push_back(node.get());
    return every;
}

// ---- Notifying observers -------------------------------------------------------------------------------------------

// False for a node that is still being created: observers do not know it yet.
bool Network::isListed(const HostNode &node) const { return names_.find(node.name) == &node; }

void Network::noteLookChanged(HostNode &node) {
    if (isListed(node)) observers_.notify([&](NetworkObserver &observer) { observer.lookChanged(node); });
}

void Network::noteSocketsChanged(HostNode &node) {
    assertInterface();
    if (isListed(node)) observers_.notify([&](NetworkObserver &observer) { observer.socketsChanged(node); });
}

void Network::setLook(HostNode &node, NodeLook look) {
    assertInterface();
    if (node.look == look) return;
    node.look = std::move(look);
    noteLookChanged(node);
}

void Network::setColour(HostNode &node, const std::array<int, 3> &colour) {
    assertInterface();
    if (node.colour == colour) return;
    node.colour = colour;
    noteLookChanged(node);
}

void Network::setPreviewType(HostNode &node, int type) {
    assertInterface();
    if (node.previewType == type) return;
    node.previewType = type;
    noteLookChanged(node);
}

void Network::requestPreview(HostNode &node) {
    assertInterface();
    if (isListed(node)) observers_.notify([&](NetworkObserver &observer) { observer.previewRequested(node); });
}

// ---- What the owner provides ---------------------------------------------------------------------------------------

void Network::changed() {
    if (event_) callModule(owningServer_, "network event", [&] { event_(this); });
}

HostChannelGroup *Network::channelGroup() {
    if (group_) return group_;
    if (!ownGroup_) ownGroup_ = makeRootGroup(name_);
    return ownGroup_.get();
}

void Network::bounds(double result[3][2]) {
    for (int axis = 0; axis < 3; ++axis) {
        result[axis][0] = -0.5;
        result[axis][1] = 0.5;
    }
    if (autosize_) callModule(owningServer_, "autosize", [&] { autosize_(this, userData_, result); });
}

bool Network::previewSample(ShadingSample *sample, double colour[3]) {
    assertRender();
    if (!description_.preview) return false;
    description_.preview(this, sample, colour);
    return true;
}

HostPanel *panelOf(HostNode &node) {
    assertInterface();
    if (node.server) {
        // Asked for each time, as LightWave does when it opens a panel; the server keeps one panel for each instance.
        node.panel = node.server->panel(node.instance);
        return node.panel;
    }
    const HostRootDescription &description = node.network->description();
    if (!description.panel) return nullptr;
    return callModule(node.network->owningServer(), "root panel", [&] { return description.panel(node.network); });
}

} // namespace velm::host
