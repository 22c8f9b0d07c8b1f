// Servers for tests: nodes that record their calls.
#pragma once

#include "host/graph/network.h"
#include "host/graph/node.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velm::host::test {

// The calls of test nodes, in order: "create A", "event A.Scalar connected 2", "destroy A".
std::vector<std::string> &journal();

// A node with an input and an output of each connection type: "Color", "Scalar", "Vector", "Integer", "Function",
// "Material". An output gives the instance's value, or the value of its input of that name where that is connected,
// plus `step` (scalar and integer); a function gives twice the value that it transforms plus `step`; with `silent`
// nothing is ever set.
struct TestNode {
    HostNode *node = nullptr;
    double colour[3] = {0.1, 0.2, 0.3};
    double scalar = 0;
    double vector[3] = {1, 2, 3};
    int integer = 0;
    HostMaterial material{};
    double step = 0;
    bool silent = false;
    HostInput *elsewhere = nullptr; // when set, evaluated instead of "Scalar"; may be of another network
    const char *initError = nullptr, *newTimeError = nullptr;
    HostInput *inputs[7] = {}; // by connection type
    HostOutput *outputs[7] = {};
};

// The target and asking type of the calling thread's last evaluation of a test node.
struct LastAsked {
    void *target = nullptr;
    int type = 0;
};
LastAsked &lastAsked();

// A node that holds a network, with an output "Scalar" that gives the value of the inner root's input "Scalar".
struct TestGroup {
    HostNode *node = nullptr;
    Network *network = nullptr;
    bool quiet = false; // hides the errors that the network reports at init and newTime
    HostInput *root = nullptr;
    HostOutput *output = nullptr;
};

TestNode &testNode(HostNode &node);
TestGroup &testGroup(HostNode &node);

// The message with which the next creation of a test node fails; null for success.
void failNextCreate(const char *message);

// A fixture with "Test Node" (shown as "Tester") and "Test Group" in the host's list, and an empty journal.
class GraphTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    static HostNode &add(Network &network, const std::string &name) {
        return network.addNode(serverList().get("Test Node"), name);
    }
    static HostNode &addGroup(Network &network, const std::string &name) {
        return network.addNode(serverList().get("Test Group"), name);
    }
    static double scalarOf(HostNode &node, const char *input);

    ShadingSample sample{};
};

// Gives the root one input of each type, with the same names as TestNode's.
void addRootInputs(Network &network);

} // namespace velm::host::test
