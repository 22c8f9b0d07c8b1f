// Adds the module's servers to the list of all servers, for the tests that need them.
#pragma once

#include "host/graph/server_list.h"
#include "host/load/module.h"

namespace velm::host::test {

// Loads the module at the first call, as a host does when it starts, and never unloads it, so that the memory that the
// module keeps for its life stays reachable. The origin of its servers is "velm.p".
inline void listModule() {
    static const Module &module = *[] {
        const auto *loaded = new Module(Module::open(VELM_MODULE_FILE));
        serverList().add(loaded->servers(), "velm.p");
        return loaded;
    }();
    static_cast<void>(module);
}

} // namespace velm::host::test
