// What a module's nodes can be held to in a walk, which is tried out before it.
#pragma once

#include "host/check/random_walk/random_walk.h"
#include "host/check/watch/watch.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

// A node is steady when it gives the same each time with settings of chance, and self-contained when it does so
// whatever becomes of instances of all the module's nodes. In the order of `names`, for each two letters: 'y' or 'n'.
// Makes and destroys instances. [interface thread]
std::string tryOut(const WatchedServers &servers, const std::vector<std::string> &names, std::uint64_t seed);

// The nodes of these names, as they were tried out, perhaps in another process.
Cast makeCast(const WatchedServers &servers, const std::vector<std::string> &names, const std::string &triedOut);

} // namespace velm::host
