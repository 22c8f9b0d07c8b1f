// Fuzzes object files: their chunks, and the values, textures and networks of their surfaces.
#include "fuzz/module_nodes.h"
#include "fuzz/networks.h"
#include "fuzz/require.h"

#include "host/files/network_outline.h"
#include "host/files/object_file.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.lwo";

// Replaces a network and requires that reading gives the new one and leaves the other surfaces as they were.
void replaceNetwork(ObjectFile file, std::size_t surface, const std::string &block) {
    file.setNetwork(surface, block);
    const ObjectFile again(file.write(), kName);
    require(again.surfaces().size() == file.surfaces().size(), "a new network changes no other surface");
    require(again.network(surface) == block, "a new network replaces the old one");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    listModuleNodes();
    const std::string_view bytes = asText(data, size);
    acceptsInput(kName, [&] {
        const ObjectFile file(bytes, kName);
        require(file.write() == bytes, "an object file is written as it was read");
        for (std::size_t i = 0; i < file.surfaces().size(); ++i) {
            acceptsInput(kName, [&] { file.values(i); });
            acceptsInput(kName, [&] { file.textures(i); });
            const auto network = file.network(i);
            if (!network) continue;
            outlineOf(*network);
            ObjectFile same = file;
            same.setNetwork(i, std::string(*network));
            // The bytes may differ, since writing corrects a missing or non-zero padding byte.
            acceptsInput(kName, [&] {
                require(ObjectFile(same.write(), kName).network(i) == network, "a network is read as it was written");
            });
            acceptsInput(kName,
                         [&] { replaceNetwork(file, i, throughSurface(*network, kName, file.networkOffset(i))); });
        }
    });
    return 0;
}
