#include "host/graph/node_data.h"

#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/guard/module_call.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <fmt/format.h>

#include <utility>

namespace velm::host {

namespace {

// Without the saved copy.
void saveByServer(const HostNode &node, const HostSaveState &state) {
    if (!node.handler || !node.handler->instance->save) return;
    const int depth = state.depth(state.data);
    auto said = callForError(node.server->number(), "save",
                             [&] { return node.handler->instance->save(node.instance, &state); });
    if (const auto error = failureOf(node, std::move(said)))
        throw InputError(fmt::format("cannot save the node {}: {}", inQuotes(node.name), *error));
    while (state.depth(state.data) > depth) state.endBlock(state.data); // that the server left open
}

std::string dataByServer(const HostNode &node) {
    StateWriter writer(kStateBinary);
    saveByServer(node, *writer.state());
    return writer.finish();
}

} // namespace

void loadData(HostNode &node, const HostLoadState &state) {
    assertInterface();
    if (!node.handler || !node.handler->instance->load) return;
    const bool canCopy = state.mode == kStateBinary && isOfReader(state);
    std::string inFile = canCopy ? unreadContents(state) : std::string();
    const int depth = state.depth(state.data);
    auto said = callForError(node.server->number(), "load",
                             [&] { return node.handler->instance->load(node.instance, &state); });
    if (const auto error = failureOf(node, std::move(said)))
        throw InputError(fmt::format("cannot load the node {}: {}", inQuotes(node.name), *error));
    while (state.depth(state.data) > depth) state.endBlock(state.data); // that the server left open
    node.savedCopy.reset();
    if (!canCopy) return;
    std::string asSaved = dataByServer(node);
    if (asSaved == inFile) return;
    node.savedCopy = {.inFile = std::move(inFile), .asSaved = std::move(asSaved)};
}

void saveData(const HostNode &node, const HostSaveState &state) {
    assertInterface();
    if (state.mode == kStateBinary && node.savedCopy && dataByServer(node) == node.savedCopy->asSaved)
        state.write(state.data, node.savedCopy->inFile.data(), static_cast<int>(node.savedCopy->inFile.size()));
    else
        saveByServer(node, state);
}

void loadSavedData(HostNode &node, std::string_view data, const std::string &about) {
    StateReader reader(kStateBinary, data, about);
    loadData(node, *reader.state());
    if (reader.failed()) throw InputError(reader.error());
}

std::string savedData(const HostNode &node) {
    StateWriter writer(kStateBinary);
    saveData(node, *writer.state());
    return writer.finish();
}

} // namespace velm::host
