// Saving a network to a file, and copying it to another network.
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/graph/network_blocks.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"
#include "host/guard/module_call.h"
#include "host/state/save_state.h"

#include <fmt/format.h>

#include <unordered_map>
#include <utility>

namespace velm::host {

using namespace blocks;

namespace {

void saveString(const HostSaveState &state, const HostBlockId &id, const std::string &text) {
    state.beginBlock(state.data, &id, 1);
    state.writeString(state.data, text.c_str());
    state.endBlock(state.data);
}

void saveIntegers(const HostSaveState &state, const HostBlockId &id, const int *values, int count) {
    state.beginBlock(state.data, &id, 1);
    state.writeI4(state.data, values, count);
    state.endBlock(state.data);
}

void saveNode(const HostSaveState &state, const HostNode &node, const std::string &name) {
    // A root without a server is saved under its network's name.
    saveString(state, kServer, node.server ? node.server->name() : node.network->name());
    state.beginBlock(state.data, &kTag, 0);
    saveString(state, kRealName, node.server ? node.server->displayName() : node.network->name());
    saveString(state, kName, name);
    saveIntegers(state, kCoordinates, node.look.at.data(), 2);
    saveIntegers(state, kMode, &node.look.mode, 1);
    state.beginBlock(state.data, &kData, 0);
    if (node.savesData) saveData(node, state);
    state.endBlock(state.data);
    saveString(state, kPreview, node.look.preview);
    saveString(state, kComment, node.look.comment);
    state.endBlock(state.data);
    if (const std::string mistake = firstMistake(state); !mistake.empty())
        throw InputError(fmt::format("cannot save the node {}: {}", inQuotes(node.name), mistake));
}

void copySettings(HostNode &to, const HostNode &from) {
    to.network->setLook(to, from.look);
    to.savesData = from.savesData;
    to.savedCopy = from.savedCopy;
    if (!to.handler || !to.handler->instance->copy) return;
    auto said = callForError(to.server->number(), "copy",
                             [&] { return to.handler->instance->copy(to.instance, from.instance); });
    if (const auto error = failureOf(to, std::move(said)))
        throw InputError(fmt::format("cannot copy the node {}: {}", inQuotes(from.name), *error));
}

} // namespace

// A root that has a server is saved under the server's display name, unless another node has that name.
std::string Network::nameInFile(const HostNode &node) const {
    if (&node != root_.get() || !node.server) return node.name;
    const HostNode *namesake = findNode(node.server->displayName());
    return namesake && namesake != &node ? node.name : node.server->displayName();
}

void Network::save(const HostSaveState &state) {
    assertInterface();
    state.beginBlock(state.data, &kRoot, 0);
    saveIntegers(state, kLocation, location_.data(), 2);
    state.beginBlock(state.data, &kZoom, 1);
    state.writeFP(state.data, &zoom_, 1);
    state.endBlock(state.data);
    const auto disabled = static_cast<unsigned short>(state_);
    state.beginBlock(state.data, &kDisabled, 1);
    state.writeU2(state.data, &disabled, 1);
    state.endBlock(state.data);
    state.endBlock(state.data);

    saveIntegers(state, kVersion, &kFormatVersion, 1);

    state.beginBlock(state.data, &kNodes, 0);
    for (const HostNode *node : all()) saveNode(state, *node, nameInFile(*node));
    state.endBlock(state.data);

    state.beginBlock(state.data, &kConnections, 0);
    for (const HostNode *node : all())
        for (const auto &input : node->inputs) {
            if (!input->source) continue;
            saveString(state, kInputNode, nameInFile(*node));
            saveString(state, kInput, input->name);
            saveString(state, kOutputNode, nameInFile(*input->source->node));
            saveString(state, kOutput, input->source->name);
        }
    state.endBlock(state.data);
}

void Network::copyFrom(Network &from) {
    assertInterface();
    if (&from == this) return;
    if (from.contains(*this) || contains(from))
        throw InputError(
            fmt::format("cannot copy {} to {}: one is inside the other", inQuotes(from.name_), inQuotes(name_)));
    clear();
    state_ = from.state_;
    location_ = from.location_;
    zoom_ = from.zoom_;
    std::unordered_map<const HostNode *, HostNode *> copies;
    for (const HostNode *node : from.all()) {
        const auto copied = [&]() -> HostNode & {
            if (node == from.root_.get()) return *root_;
            return node->placeholder ? addPlaceholder(node->placeholder, node->name)
                                     : addNode(*node->server, node->name);
        };
        HostNode &copy = copied();
        if (copy.server == node->server) copySettings(copy, *node);
        copies[node] = &copy;
    }
    for (const HostNode *node : from.all())
        for (const auto &input : node->inputs) {
            if (!input->source) continue;
            connectAsSaved(copies.at(input->source->node)->name, input->source->name, copies.at(node)->name,
                           input->name);
        }
}

} // namespace velm::host
