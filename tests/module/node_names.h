// The nodes that the module offers.
#pragma once

#include "module/servers.h"

namespace velm::plugin {

// Their server names, in the order of the server table.
#define NAME(Name, server) server,
inline constexpr const char *kNodeNames[] = {VELM_SERVERS(NAME, NAME)};
#undef NAME

} // namespace velm::plugin
