#include "tests/nodes/node_frame.h"

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::plugin {

Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines &part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

const HostServer *serverOf(const char *className, const std::string &name) {
    for (const HostServer *server = _mod_descrip.servers; server->className; ++server)
        if (server->className == std::string(className) && server->name == name) return server;
    return nullptr;
}

} // namespace velm::plugin
