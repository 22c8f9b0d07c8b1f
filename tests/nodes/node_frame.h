// What a node class is, told as data, and the fixture of the tests that every class goes through with it: activation,
// creation, saving, loading, copying, frames, its panel and its connections. A class's own test file gives its facts
// and instantiates the suite for them.
#pragma once

#include "tests/module/test_node.h"

#include <gtest/gtest.h>

namespace velm::plugin {

using Lines = std::vector<std::string>;

// A parameter that is animated, in the order of creation.
struct ParmFacts {
    const char *channel;
    int type;
    std::vector<double> initial; // one or three
};

// A control, in the order of the panel.
struct ControlFacts {
    unsigned int id;
    const char *label, *control, *valueType;
    const char *channel = nullptr; // of the animated parameter behind it; null: an integer
    const char *input = nullptr;   // whose connection greys it
    int initial = 0;               // of an integer
};

struct NodeFacts {
    const char *name;           // display name, and that of the group of channels; its server is "Velm " and this
    const char *menu = nullptr; // its group of the node menu; null: it is no server of the module
    HostActivate *activate;
    HostActivate *interface = nullptr; // null: no panel
    Lines furtherServices = {};        // between the node services and the parameter services
    bool hasGroup = true;              // and looks the parameter services up
    bool setsPreview = true;
    std::vector<ParmFacts> parms = {};
    Lines inputs = {}; // "Mode 4": name and connection type, in order
    Lines outputs = {};
    std::vector<ControlFacts> panel = {};
    Lines saved = {}; // what a new node writes
    Lines initLog = {};
};

// The record of a server of the module; null when there is none of this name.
const HostServer *serverOf(const char *className, const std::string &name);

class NodeFrame : public testing::TestWithParam<const NodeFacts *> {
  protected:
    FakeHost host;
    const NodeFacts &facts = *GetParam();
    TestNode node{host, facts.activate, facts.interface};

    // The integers of the panel.
    std::vector<ControlFacts> integers() const;
    // One line for each parameter: the start, its channel, the end.
    Lines forEachParm(const std::string &start, const std::string &end = "") const;
    // Everything that a new node notes while it is made.
    Lines creation(const std::string &nodeName) const;
    // A panel with nothing noted of how it came about.
    HostPanel *shown();
};

// What only the classes with a panel go through; inputs are greyed there, and refresh it.
class NodePanel : public NodeFrame {};

// Instantiates both suites, or the first alone, for one class.
#define VELM_NODE_WITH_PANEL(Name, facts)                                                                              \
    INSTANTIATE_TEST_SUITE_P(Name, NodeFrame, testing::Values(&(facts)));                                              \
    INSTANTIATE_TEST_SUITE_P(Name, NodePanel, testing::Values(&(facts)))
#define VELM_NODE_WITHOUT_PANEL(Name, facts) INSTANTIATE_TEST_SUITE_P(Name, NodeFrame, testing::Values(&(facts)))

Lines joined(std::initializer_list<Lines> parts);

} // namespace velm::plugin
