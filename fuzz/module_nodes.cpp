#include "fuzz/module_nodes.h"

#include "fuzz/promise.h"

#include "host/graph/server_list.h"
#include "module/host.h"

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::fuzz {

void listModuleNodes() {
    static const bool listed = [] {
        demand(_mod_descrip.startup() != nullptr, "the module starts");
        serverList().add(_mod_descrip.servers, "velm.p");
        return true;
    }();
    static_cast<void>(listed);
}

} // namespace velm::fuzz
