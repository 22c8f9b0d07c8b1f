// The module's nodes, linked into the program, so that the fuzzer sees which of their branches an input takes.
#pragma once

#include "module/host.h"

namespace velm::host::fuzz {

// Their table. Starts the module, the first time.
const HostServer *moduleServers();

// Puts them into the host's list of servers, the first time.
void listModuleNodes();

} // namespace velm::host::fuzz
