// Object files: their chunks, and the values and networks of their surfaces.
#include "fuzz/module_nodes.h"
#include "fuzz/networks.h"
#include "fuzz/promise.h"

#include "host/files/object_file.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.lwo";

// Writes a network in place of another, and looks whether it is the one that is found there.
void replaceNetwork(ObjectFile file, std::size_t surface, const std::string &block) {
    file.setNetwork(surface, block);
    const ObjectFile again(file.write(), kName);
    demand(again.surfaces().size() == file.surfaces().size(), "a new network changes no other surface");
    demand(again.network(surface) == block, "a new network stands where the old one stood");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    listModuleNodes();
    const std::string_view bytes = asText(data, size);
    done(kName, [&] {
        const ObjectFile file(bytes, kName);
        demand(file.write() == bytes, "an object file is written as it was read");
        for (std::size_t i = 0; i < file.surfaces().size(); ++i) {
            done(kName, [&] { file.values(i); });
            const auto network = file.network(i);
            if (!network) continue;
            ObjectFile same = file;
            same.setNetwork(i, std::string(*network));
            // Where the byte that makes a block's length even was left out or was no zero, it is put right.
            done(kName, [&] { demand(ObjectFile(same.write(), kName).network(i) == network, "a network stays"); });
            done(kName, [&] { replaceNetwork(file, i, throughSurface(*network, kName, file.networkOffset(i))); });
        }
    });
    return 0;
}
