// Fuzzes the saved data of single nodes in the binary and the text form. The low bits of the input's first byte select
// the node, its highest bit the form.
#include "fuzz/module_nodes.h"
#include "fuzz/require.h"

#include "host/graph/network.h"
#include "host/graph/node_data.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed";

// A node that has loaded some data, in a network of its own. The functions throw InputError.
class LoadedNode {
  public:
    LoadedNode(ServerClass &server, int mode, std::string_view bytes)
        : network_("Fuzzed", "Fuzzed", nullptr, nullptr), node_(network_.addNode(server)) {
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
    Network network_;
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
    acceptsInput(kName, [&] {
        const std::string first = LoadedNode(server, mode, bytes).saved(mode);
        if (mode == kStateBinary) require(first == bytes, "unchanged data is saved as it was");
        std::string second;
        const bool read = acceptsInput(kName, [&] { second = LoadedNode(server, mode, first).saved(mode); });
        require(read, "saved data can be loaded", first);
        require(first == second, "saved data is saved again without a change", first + '\n' + second);
    });
    return 0;
}
