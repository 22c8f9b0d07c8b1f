// Fuzzes networks in the binary form. The input is the contents of a NODS block.
#include "fuzz/module_nodes.h"
#include "fuzz/networks.h"
#include "fuzz/require.h"

using namespace velm::host;
using namespace velm::host::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    listModuleNodes();
    if (size > 0xffff) return 0; // more than a block can hold
    const std::string name = "fuzzed.lwo";
    const std::string block = std::string("NODS") + static_cast<char>(size >> 8) + static_cast<char>(size & 0xff) +
                              std::string(asText(data, size));
    acceptsInput(name, [&] { throughSurface(block, name, 0); });
    return 0;
}
