#include "host/files/network_block.h"

#include "host/graph/network_blocks.h"
#include "host/graph/placeholder.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <array>
#include <fmt/format.h>

namespace velm::host {

namespace {

bool enter(const HostLoadState &state, const HostBlockId &block) {
    const std::array<HostBlockId, 2> table{{block, {0, nullptr}}};
    return state.findBlock(state.data, table.data()) != 0;
}

// The server of the first node, which is the root; "Root" when the block has no nodes.
std::string rootServer(const HostLoadState &state) {
    std::array<char, 256> server{"Root"};
    if (enter(state, blocks::kNetwork) && enter(state, blocks::kNodes) && enter(state, blocks::kServer))
        state.readString(state.data, server.data(), static_cast<int>(server.size()));
    return server.data();
}

} // namespace

void loadNetwork(Surface &surface, std::string_view block, const std::string &file, std::size_t offset) {
    StateReader reader(kStateBinary, block, file, offset);
    try {
        surface.load(*reader.state());
    } catch (const InputError &error) {
        if (reader.failed()) throw InputError(reader.error());
        throw InputError(fmt::format("{}: byte {}: {}", file, offset, error.what()));
    }
    if (reader.failed()) throw InputError(reader.error());
}

std::unique_ptr<Network> readNetwork(const SceneText &scene, const SceneBlock &block) {
    StateReader ahead(kStateText, scene.text(block), scene.name(), block.line - 1);
    const std::string server = rootServer(*ahead.state());
    auto network = std::make_unique<Network>(server, std::make_shared<Placeholder>(server, server));
    StateReader whole(kStateText, scene.text(block), scene.name(), block.line - 1);
    const HostLoadState &state = *whole.state();
    try {
        if (!enter(state, blocks::kNetwork)) throw InputError("there is no network here");
        network->load(state);
        state.endBlock(state.data);
    } catch (const InputError &error) {
        if (whole.failed()) throw InputError(whole.error());
        throw InputError(fmt::format("{}:{}: {}", scene.name(), block.line, error.what()));
    }
    if (whole.failed()) throw InputError(whole.error());
    return network;
}

std::string writeNetwork(Network &network) {
    StateWriter writer(kStateText);
    const HostSaveState &state = *writer.state();
    state.beginBlock(state.data, &blocks::kNetwork, 0);
    network.save(state);
    state.endBlock(state.data);
    return writer.finish();
}

} // namespace velm::host
