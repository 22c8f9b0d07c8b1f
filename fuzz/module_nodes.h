// The module's nodes, linked into the program so that the fuzzer measures the coverage of their code.
#pragma once

#include "module/host.h"

namespace velm::host::fuzz {

// The module's server table. The first call offers the host's services and starts the module.
const HostServer *moduleServers();

// Adds the servers to the host's server list. Only the first call has an effect.
void listModuleNodes();

} // namespace velm::host::fuzz
