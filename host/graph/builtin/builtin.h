// The host's own nodes, by the same records as a module's.
#pragma once

#include "module/host.h"

namespace velm::host {

inline constexpr char kBuiltinOrigin[] = "built in";

// All nodes that scenes may use; ends with a null class.
const HostServer *builtinServers();

} // namespace velm::host
