// The module's servers in the list of all servers, for every test of the program that needs them.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

namespace velm::host::test {

// Loads and lists the module at the first call, as a host does at its start, and never unloads it, so that what the
// module keeps for its life stays in reach. Its servers come from "velm.p".
inline void listModule() {
    static const Module &module = *[] {
        const auto *loaded = new Module(Module::open(VELM_MODULE_FILE));
        serverList().add(loaded->servers(), "velm.p");
        return loaded;
    }();
    static_cast<void>(module);
}

} // namespace velm::host::test
