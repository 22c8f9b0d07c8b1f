// Fuzzes the calls of a host. The input is a call script for a random walk through the module's nodes, which is watched
// as in level 10 of "velm check".
#include "fuzz/module_nodes.h"
#include "fuzz/require.h"

#include "host/check/process/check_record.h"
#include "host/check/random_walk/node_set.h"
#include "host/check/random_walk/random_walk.h"

#include <algorithm>

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

constexpr std::size_t kLongest = 800; // bytes of a script; longer ones are cut, so that more scripts are tried
constexpr std::uint64_t kSeed = 1;

NodeSet makeModuleNodeSet() {
    static CheckRecord record;
    useCheckRecord(&record);
    setReproducing(true); // a failure ends the program
    static const WatchedServers servers(moduleServers(), "velm.p");
    const std::vector<std::string> names = servers.names();
    return makeNodeSet(servers, names, classifyNodes(servers, names, kSeed));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static const NodeSet nodes = makeModuleNodeSet();
    randomWalk(nodes, std::string(asText(data, std::min(size, kLongest))), {});
    return 0;
}
