// Every service that a node of the module asks for, at once, and every node of a module created in it: what a host is
// to a module, with answers that hold arithmetic only and are the same on every platform.
#pragma once

#include "tests/module/fake_editors.h"
#include "tests/module/fake_images.h"
#include "tests/module/fake_scene.h"
#include "tests/module/test_node.h"

#include <list>

namespace velm::plugin {

// One at a time, and for one thread.
class WholeHost {
  public:
    // Activates and creates each node that the module lists. Throws std::runtime_error where one cannot be, or where
    // the table of servers is not a row of pairs. The module's records must live as long as this.
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
        HostActivate *activate, *interface; // for this host, whatever lookup they are handed; the second may be null
        TestNode node;
        Server(FakeHost &host, const char *serverName, HostActivate *handler, HostActivate *panel)
            : name(serverName), activate(handler), interface(panel), node(host, handler, panel, serverName) {}
    };
    std::list<Server> servers; // in the module's order

    // Gives all the services together.
    static void *lookup(const char *service, int use);
};

// A number from -1 to 3, other for every pair of arguments, as good as random.
double someNumber(unsigned int turn, unsigned int place);

// A sample in a scene of which the ray functions know: what a ray hits depends on where it goes, and how.
ShadingSample someSample(unsigned int turn);

// Feeds every input of a node with numbers that change a little with every evaluation; in even turns the integer ones,
// which overrule the choices on the panel, with nothing.
void feed(TestNode &node, unsigned int turn);

} // namespace velm::plugin
