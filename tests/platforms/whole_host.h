// A fake host that offers all services that the module's nodes use, and creates an instance of every node. Its services
// calculate by plain arithmetic only, so that their results are the same on every platform.
#pragma once

#include "tests/module/fake_editors.h"
#include "tests/module/fake_images.h"
#include "tests/module/fake_scene.h"
#include "tests/module/test_node.h"

#include <list>

namespace velm::plugin {

// There can be one at a time, used by one thread.
class WholeHost {
  public:
    // Activates each node that the module lists, and creates an instance. Throws std::runtime_error if one fails, or if
    // the server table does not consist of pairs of a handler and an interface. `module` must outlive this object.
    explicit WholeHost(const HostModuleDescriptor &module);
    ~WholeHost();
    WholeHost(const WholeHost &) = delete;
    WholeHost &operator=(const WholeHost &) = delete;

    FakeHost host;
    FakeScene scene;
    FakeImages images;
    FakeEditors editors;

    struct Server {
        std::string name;
        // They use this host's services instead of the lookup argument. `interface` may be null.
        HostActivate *activate, *interface;
        TestNode node;
        Server(FakeHost &host, const char *serverName, HostActivate *handler, HostActivate *panel)
            : name(serverName), activate(handler), interface(panel), node(host, handler, panel, serverName) {}
    };
    std::list<Server> servers; // in the module's order

    // The lookup function of this host.
    static void *lookup(const char *service, int use);
};

// A pseudo-random number from -1 to 3 for each pair of arguments.
double someNumber(unsigned int turn, unsigned int index);

// A sample with ray functions whose results depend on the ray's direction and mode.
ShadingSample someSample(unsigned int turn);

// Connects every input of a node to a source of numbers that change a little with every evaluation. In even turns,
// integer inputs are left unconnected, so that the settings of the panel apply.
void feed(TestNode &node, unsigned int turn);

} // namespace velm::plugin
