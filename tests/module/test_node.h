// One node of a server, activated and created with the fake host as the real one would do it, and what tests do with
// it.
#pragma once

#include "tests/module/fake_host.h"

namespace velm::plugin {

// The activation of a server of the module that is linked in, found through the descriptor; null when the server has
// none.
HostActivate *activationOf(const char *className, const char *serverName);

class TestNode {
  public:
    // Activates and creates; the host's log is empty afterwards. `interface` may be null: there is no panel then.
    TestNode(FakeHost &host, HostActivate *activate, HostActivate *interface, const std::string &nodeName = "node");
    // A node of the module that is linked in, by its server name.
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
    void *instance = nullptr; // null when creation failed

    HostInput &input(const std::string &name);
    HostOutput &output(const std::string &name);
    HostVParm &parm(const std::string &channel);
    std::vector<std::string> inputs() const; // "Color 1" for each: its name and connection type
    std::vector<std::string> outputs() const;

    // Feeds an input with a value, or with what a function leaves in it.
    void connect(const std::string &name, double value);
    void connect(const std::string &name, int value);
    void connect(const std::string &name, double x, double y, double z);
    void disconnect(const std::string &name) { input(name).source = {}; }

    HostNodeValue evaluate(const std::string &outputName, ShadingSample &sample);
    // What it gives for an output of that connection type which is not one of its own.
    HostNodeValue evaluateStranger(int type, ShadingSample &sample);
    double scalar(const std::string &outputName, ShadingSample &sample) {
        return evaluate(outputName, sample).numbers[0];
    }

    // Settings: an integer as the panel sets it; an animated one through its parameter and a new frame.
    void set(unsigned int id, int value);
    void set(const std::string &channel, double value);
    void set(const std::string &channel, double x, double y, double z);
    int integer(unsigned int id); // as the panel shows it

    HostPanel *panel(); // activates the interface, as the host does to show it

  private:
    HostActivate *interface_;
};

// A sample at the origin of a scene without anything in it, its normals pointing up.
ShadingSample plainSample();

} // namespace velm::plugin
