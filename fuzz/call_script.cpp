// What a host may call: the input is a script, as those that "velm check" walks by in level 10, upon the module's
// nodes. The module and its calls into the host are watched as there.
#include "fuzz/module_nodes.h"
#include "fuzz/promise.h"

#include "host/check/process/check_record.h"
#include "host/check/random_walk/node_set.h"
#include "host/check/random_walk/random_walk.h"

#include <algorithm>

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

constexpr std::size_t kLongest = 800; // bytes that are followed, so that many scripts are tried
constexpr std::uint64_t kSeed = 1;

Cast makeModuleCast() {
    static Blackboard board;
    useBlackboard(&board);
    reproduceHere(true); // what is found ends the program
    static const WatchedServers servers(moduleServers(), "velm.p");
    const std::vector<std::string> names = servers.names();
    return makeCast(servers, names, tryOut(servers, names, kSeed));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static const Cast cast = makeModuleCast();
    walk(cast, std::string(asText(data, std::min(size, kLongest))), {});
    return 0;
}
