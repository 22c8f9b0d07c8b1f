// Scene files of the big application: their blocks, and the networks and envelopes in those.
#include "fuzz/module_nodes.h"
#include "fuzz/promise.h"

#include "host/animation/channel.h"
#include "host/files/network_block.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.lws";

// A network as it is written from a scene; InputError when it cannot be read or written.
std::string written(const SceneText &scene, std::size_t block) {
    const auto network = readNetwork(scene, scene.blocks()[block]);
    try {
        return writeNetwork(*network);
    } catch (const InputError &error) {
        throw InputError(kName + ": " + error.what());
    }
}

void networkThereAndBack(const SceneText &scene, std::size_t block) {
    const std::string text = written(scene, block);
    SceneText changed = scene;
    changed.setBlock(block, text);
    const std::string bytes = changed.write();
    try {
        const SceneText again(bytes, kName);
        demand(again.blocks().size() == scene.blocks().size(), "a new network changes no other block", bytes);
        demand(written(again, block) == text, "a network that was written is written alike once read", bytes);
    } catch (const InputError &error) {
        demand(false, "a network that was written can be read", error.what() + ('\n' + bytes));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    listModuleNodes();
    const std::string_view bytes = asText(data, size);
    done(kName, [&] {
        const SceneText scene(bytes, kName);
        demand(scene.write() == bytes, "a scene is written as it was read");
        for (const std::size_t i : scene.find("Nodal_Block")) done(kName, [&] { networkThereAndBack(scene, i); });
        for (const std::size_t i : scene.find("Envelope")) done(kName, [&] { readEnvelope(scene, scene.blocks()[i]); });
    });
    return 0;
}
