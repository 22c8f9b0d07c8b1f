#include "fuzz/module_nodes.h"

#include "fuzz/require.h"

#include "host/graph/server_list.h"
#include "host/services/services.h"

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::host::fuzz {

const HostServer *moduleServers() {
    static const bool started = [] {
        offerNodeServices();
        return _mod_descrip.startup() != nullptr;
    }();
    require(started, "the module starts");
    return _mod_descrip.servers;
}

void listModuleNodes() {
    static const bool listed = [] {
        serverList().add(moduleServers(), "velm.p");
        return true;
    }();
    static_cast<void>(listed);
}

} // namespace velm::host::fuzz
