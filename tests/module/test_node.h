// A node for tests, activated and created by the fake host as the real host does it, with helpers to connect, set and
// evaluate it.
#pragma once

#include "tests/module/fake_host.h"

namespace velm::plugin {

// The activation of a server of the linked module, found through the descriptor. Null if the server has none. Throws
// std::out_of_range if there is no such server.
HostActivate *activationOf(const char *className, const char *serverName);

class TestNode {
  public:
    // Activates the class and creates a node. The host's log is empty afterwards. `interface` may be null: then there
    // is no panel.
    TestNode(FakeHost &host, HostActivate *activate, HostActivate *interface, const std::string &nodeName = "node");
    // A node of the linked module, by its server name.
    TestNode(FakeHost &host, const char *serverName, const std::string &nodeName = "node");
    ~TestNode();
    TestNode(const TestNode &) = delete;
    TestNode &operator=(const TestNode &) = delete;

    FakeHost &host;
    HostNode &node;
    HostInstanceOps ops{};
    HostItemOps item{};
    HostRenderOps render{};
    HostNodeHandler handler{};
    const char *error = nullptr;
    void *instance = nullptr; // null if creation failed

    HostInput &input(const std::string &name);
    HostOutput &output(const std::string &name);
    HostVParm &parm(const std::string &channel);
    std::vector<std::string> inputs() const; // for each its name and connection type, as "Color 1"
    std::vector<std::string> outputs() const;

    // Connects an input to a constant.
    void connect(const std::string &name, double value);
    void connect(const std::string &name, int value);
    void connect(const std::string &name, double x, double y, double z);
    void disconnect(const std::string &name) { input(name).source = {}; }

    HostNodeValue evaluate(const std::string &outputName, ShadingSample &sample);
    // The result for an output of this connection type that belongs to another node.
    HostNodeValue evaluateStranger(int type, ShadingSample &sample);
    double scalar(const std::string &outputName, ShadingSample &sample) {
        return evaluate(outputName, sample).numbers[0];
    }

    // Sets an integer as the panel does, or an animated parameter and then a new frame.
    void set(unsigned int id, int value);
    void set(const std::string &channel, double value);
    void set(const std::string &channel, double x, double y, double z);
    int integer(unsigned int id); // the value that the panel shows

    HostPanel *panel(); // activates the interface, as the host does to show the panel

  private:
    HostActivate *interface_;
};

// A sample at the origin of an empty scene, with its normals pointing up.
ShadingSample plainSample();

} // namespace velm::plugin
