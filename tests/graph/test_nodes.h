// Servers for tests: nodes whose every step can be watched.
#pragma once

#include "host/graph/network.h"
#include "host/graph/node.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velm::host::test {

// What happened to test nodes, in order: "create A", "event A.Scalar connected 2", "destroy A".
std::vector<std::string> &journal();

// A node with an input and an output of each connection type: "Color", "Scalar", "Vector", "Integer", "Function",
// "Material". An output gives what the instance holds, or what its input of that name brings, plus `step` (scalar and
// integer); a function gives twice what it finds plus `step`; with `silent` nothing is ever set.
struct TestNode {
    HostNode *node = nullptr;
    double colour[3] = {0.1, 0.2, 0.3};
    double scalar = 0;
    double vector[3] = {1, 2, 3};
    int integer = 0;
    HostMaterial material{};
    double step = 0;
    bool silent = false;
    HostInput *elsewhere = nullptr; // evaluated in place of "Scalar" when set, as of another network
    const char *initError = nullptr, *newTimeError = nullptr;
    HostInput *inputs[7] = {}; // by connection type
    HostOutput *outputs[7] = {};
};

// What the test node that the calling thread evaluated last was asked for.
struct LastAsked {
    void *holder = nullptr;
    int type = 0;
};
LastAsked &lastAsked();

// A node that holds a network, with an output "Scalar" that gives what the inner root's "Scalar" brings.
struct TestGroup {
    HostNode *node = nullptr;
    Network *editor = nullptr;
    bool quiet = false; // keeps to itself what the network reports at init and new time
    HostInput *root = nullptr;
    HostOutput *output = nullptr;
};

TestNode &testNode(HostNode &node);
TestGroup &testGroup(HostNode &node);

// What the next created test node fails with; null for success.
void failNextCreate(const char *message);

// A fixture with "Test Node" (shown as "Tester") and "Test Group" in the host's list, and an empty journal.
class GraphTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    static HostNode &add(Network &editor, const std::string &name) {
        return editor.addNode(serverList().get("Test Node"), name);
    }
    static HostNode &addGroup(Network &editor, const std::string &name) {
        return editor.addNode(serverList().get("Test Group"), name);
    }
    static double scalarOf(HostNode &node, const char *input);

    ShadingSample sample{};
};

// An editor with a root that has one input of each type, by name as TestNode has them.
Network *addRootInputs(Network &editor);

} // namespace velm::host::test
