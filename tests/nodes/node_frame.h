// The facts of a node class, as data, and the fixture of the tests that run for every class: activation, creation,
// saving, loading, copying, frames, the panel and connections. The test file of a class states its facts and
// instantiates the suite with them.
#pragma once

#include "tests/module/test_node.h"

#include <gtest/gtest.h>

namespace velm::plugin {

using Lines = std::vector<std::string>;

// An animated parameter, in creation order.
struct ParmFacts {
    const char *channel;
    int type;
    std::vector<double> initial; // one number or three
};

// A control, in panel order.
struct ControlFacts {
    unsigned int id;
    const char *label, *control, *valueType;
    const char *channel = nullptr; // of the animated parameter behind it; null for an integer
    const char *input = nullptr;   // the input whose connection greys the control
    int initial = 0;               // value of an integer
};

struct NodeFacts {
    const char *name;           // display name, and name of the channel group; the server name is "Velm " with this
    const char *menu = nullptr; // its group of the node menu; null if it is not a server of the module
    HostActivate *activate;
    HostActivate *interface = nullptr; // null if there is no panel
    Lines furtherServices = {};        // looked up between the node services and the parameter services
    bool hasGroup = true;              // and looks up the parameter services
    bool setsPreview = true;
    std::vector<ParmFacts> parms = {};
    Lines inputs = {}; // name and connection type, as "Mode 4", in order
    Lines outputs = {};
    std::vector<ControlFacts> panel = {};
    Lines saved = {}; // the lines that a new node saves
    Lines initLog = {};
};

// The record of a server of the module. Null if there is none of this name.
const HostServer *serverOf(const char *className, const std::string &name);

class NodeFrame : public testing::TestWithParam<const NodeFacts *> {
  protected:
    FakeHost host;
    const NodeFacts &facts = *GetParam();
    TestNode node{host, facts.activate, facts.interface};

    // The integers on the panel.
    std::vector<ControlFacts> integers() const;
    // One line for each parameter: `start`, its channel, `end`.
    Lines forEachParm(const std::string &start, const std::string &end = "") const;
    // The log of creating a node.
    Lines creation(const std::string &nodeName) const;
    // Builds a panel and clears the log.
    HostPanel *shown();
};

// The tests for classes with a panel: connected inputs grey their controls and refresh the panel.
class NodePanel : public NodeFrame {};

// Instantiates both suites for one class, or only the first.
#define VELM_NODE_WITH_PANEL(Name, facts)                                                                              \
    INSTANTIATE_TEST_SUITE_P(Name, NodeFrame, testing::Values(&(facts)));                                              \
    INSTANTIATE_TEST_SUITE_P(Name, NodePanel, testing::Values(&(facts)))
#define VELM_NODE_WITHOUT_PANEL(Name, facts) INSTANTIATE_TEST_SUITE_P(Name, NodeFrame, testing::Values(&(facts)))

Lines joined(std::initializer_list<Lines> parts);

} // namespace velm::plugin
