// Looks up the servers of the module that is linked into the tests.
#include "tests/module/test_node.h"

#include <stdexcept>

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::plugin {

HostActivate *activationOf(const char *className, const char *serverName) {
    for (const HostServer *server = _mod_descrip.servers; server->className; ++server)
        if (server->className == std::string(className) && server->name == std::string(serverName))
            return server->activate;
    throw std::out_of_range(std::string("there is no server ") + serverName);
}

TestNode::TestNode(FakeHost &fakeHost, const char *serverName, const std::string &nodeName)
    : TestNode(fakeHost, activationOf(HOST_CLASS_NODE_HANDLER, serverName),
               activationOf(HOST_CLASS_NODE_INTERFACE, serverName), nodeName) {}

} // namespace velm::plugin
