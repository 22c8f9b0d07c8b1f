// The host's own nodes, described by the same records as a module's.
#pragma once

#include "module/host.h"

namespace velm::host {

inline constexpr char kBuiltinOrigin[] = "built in";

// All of them, in a table that ends with a null class name.
const HostServer *builtinServers();

} // namespace velm::host
