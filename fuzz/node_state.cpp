// What a node keeps in files, in the binary and in the text form. The first byte of the input says which node of the
// module reads, its highest bit which form.
#include "fuzz/module_nodes.h"
#include "fuzz/promise.h"

#include "host/graph/network.h"
#include "host/graph/node_data.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed";

// A node that has loaded some data, in a network of its own.
class LoadedNode {
  public:
    LoadedNode(ServerClass &server, int mode, std::string_view bytes)
        : editor_("Fuzzed", "Fuzzed", nullptr, nullptr), node_(editor_.addNode(server)) {
        StateReader reader(mode, bytes, kName);
        try {
            loadData(node_, *reader.state());
        } catch (const InputError &error) {
            throw InputError(reader.failed() ? reader.error() : kName + ": " + error.what());
        }
        if (reader.failed()) throw InputError(reader.error());
    }

    std::string saved(int mode) {
        StateWriter writer(mode);
        try {
            saveData(node_, *writer.state());
            return writer.finish();
        } catch (const InputError &error) {
            throw InputError(kName + ": " + error.what());
        }
    }

  private:
    Network editor_;
    HostNode &node_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    listModuleNodes();
    if (size == 0) return 0;
    const auto &servers = serverList().all();
    ServerClass &server = *servers[(data[0] & 0x7f) % servers.size()];
    const int mode = (data[0] & 0x80) != 0 ? kStateText : kStateBinary;
    const std::string_view bytes = asText(data, size).substr(1);
    done(kName, [&] {
        const std::string first = LoadedNode(server, mode, bytes).saved(mode);
        if (mode == kStateBinary) demand(first == bytes, "data that nobody changed are saved as they were");
        std::string second;
        const bool read = done(kName, [&] { second = LoadedNode(server, mode, first).saved(mode); });
        demand(read, "data that were saved can be loaded", first);
        demand(first == second, "data that were saved are saved alike once loaded", first + '\n' + second);
    });
    return 0;
}
