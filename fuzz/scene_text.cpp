// Fuzzes LightWave scene files: their blocks, and the networks and envelopes in them.
#include "fuzz/module_nodes.h"
#include "fuzz/require.h"

#include "host/animation/channel.h"
#include "host/files/network_block.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.lws";

// The network of a scene's block as it is written again. InputError if it cannot be read or written.
std::string rewritten(const SceneText &scene, std::size_t block) {
    const auto network = readNetwork(scene, scene.blocks()[block]);
    try {
        return writeNetwork(*network);
    } catch (const InputError &error) {
        throw InputError(kName + ": " + error.what());
    }
}

void checkRoundTrip(const SceneText &scene, std::size_t block) {
    const std::string text = rewritten(scene, block);
    SceneText changed = scene;
    changed.setBlock(block, text);
    const std::string bytes = changed.write();
    try {
        const SceneText again(bytes, kName);
        require(again.blocks().size() == scene.blocks().size(), "a new network changes no other block", bytes);
        require(rewritten(again, block) == text, "a written network is written again without a change", bytes);
    } catch (const InputError &error) {
        require(false, "a written network can be read", error.what() + ('\n' + bytes));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    listModuleNodes();
    const std::string_view bytes = asText(data, size);
    acceptsInput(kName, [&] {
        const SceneText scene(bytes, kName);
        require(scene.write() == bytes, "a scene is written as it was read");
        for (const std::size_t i : scene.find("Nodal_Block")) acceptsInput(kName, [&] { checkRoundTrip(scene, i); });
        for (const std::size_t i : scene.find("Envelope"))
            acceptsInput(kName, [&] { readEnvelope(scene, scene.blocks()[i]); });
    });
    return 0;
}
