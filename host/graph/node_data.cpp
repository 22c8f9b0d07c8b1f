#include "host/graph/node_data.h"

#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/guard/module_call.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

namespace velm::host {

namespace {

// As the server saves it.
void saveOwn(const HostNode &node, const HostSaveState &state) {
    if (!node.handler || !node.handler->instance->save) return;
    const int depth = state.depth(state.data);
    const HostError said =
        callModule(node.server->number(), "save", [&] { return node.handler->instance->save(node.instance, &state); });
    if (const auto error = failureOf(node, said))
        throw InputError("cannot save the node " + quoted(node.name) + ": " + *error);
    while (state.depth(state.data) > depth) state.endBlock(state.data); // blocks that the server left open
}

std::string ownData(const HostNode &node) {
    StateWriter writer(kStateBinary);
    saveOwn(node, *writer.state());
    return writer.finish();
}

} // namespace

void loadData(HostNode &node, const HostLoadState &state) {
    assertInterface();
    if (!node.handler || !node.handler->instance->load) return;
    const bool isKept = state.mode == kStateBinary && isOfReader(state);
    std::string contents = isKept ? unreadContents(state) : std::string();
    const int depth = state.depth(state.data);
    const HostError said =
        callModule(node.server->number(), "load", [&] { return node.handler->instance->load(node.instance, &state); });
    if (const auto error = failureOf(node, said))
        throw InputError("cannot load the node " + quoted(node.name) + ": " + *error);
    while (state.depth(state.data) > depth) state.endBlock(state.data); // that the server left open
    node.keptData.reset();
    if (!isKept) return;
    std::string own = ownData(node);
    if (own == contents) return;
    node.keptData = {.inFile = std::move(contents), .asSaved = std::move(own)};
}

void saveData(const HostNode &node, const HostSaveState &state) {
    assertInterface();
    if (state.mode == kStateBinary && node.keptData && ownData(node) == node.keptData->asSaved)
        state.write(state.data, node.keptData->inFile.data(), static_cast<int>(node.keptData->inFile.size()));
    else
        saveOwn(node, state);
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
