#include "tests/module/test_node.h"

#include <algorithm>
#include <stdexcept>

namespace velm::plugin {
namespace {

// The element of a list with this name. Throws if there is none, which is an error in the test.
template <class List, class Name>
auto &named(List &list, const HostNode *node, Name name, const std::string &wanted) {
    for (auto &entry : list)
        if (name(entry) == wanted && (!node || entry.node == node)) return entry;
    throw std::out_of_range("the node has no " + wanted);
}

} // namespace

TestNode::TestNode(FakeHost &fakeHost, HostActivate *activate, HostActivate *interface, const std::string &nodeName)
    : host(fakeHost), node(fakeHost.addNode(nodeName)), interface_(interface) {
    handler.instance = &ops;
    handler.item = &item;
    handler.render = &render;
    if (activate(kNodeHandlerVersion, FakeHost::lookup, &handler, nullptr) != kActivateOk)
        throw std::runtime_error("the activation failed");
    instance = ops.create(ops.priv, &node, &error);
    host.takeLog();
}

TestNode::~TestNode() {
    if (instance) ops.destroy(instance);
}

HostInput &TestNode::input(const std::string &name) {
    return named(
        host.inputs, &node, [](const HostInput &entry) { return entry.name; }, name);
}

HostOutput &TestNode::output(const std::string &name) {
    return named(
        host.outputs, &node, [](const HostOutput &entry) { return entry.name; }, name);
}

HostVParm &TestNode::parm(const std::string &channel) {
    for (HostVParm &entry : host.parms)
        if (entry.channel == channel && entry.group && entry.group->parent == node.group && !entry.destroyed)
            return entry;
    throw std::out_of_range("the node has no parameter " + channel);
}

std::vector<std::string> TestNode::inputs() const {
    std::vector<std::string> result;
    for (const HostInput &entry : host.inputs)
        if (entry.node == &node) result.push_back(entry.name + " " + std::to_string(entry.type));
    return result;
}

std::vector<std::string> TestNode::outputs() const {
    std::vector<std::string> result;
    for (const HostOutput &entry : host.outputs)
        if (entry.node == &node) result.push_back(entry.name + " " + std::to_string(entry.type));
    return result;
}

void TestNode::connect(const std::string &name, double value) {
    input(name).source = [value](ShadingSample *, void *target) { *static_cast<double *>(target) = value; };
}

void TestNode::connect(const std::string &name, int value) {
    input(name).source = [value](ShadingSample *, void *target) { *static_cast<int *>(target) = value; };
}

void TestNode::connect(const std::string &name, double x, double y, double z) {
    input(name).source = [x, y, z](ShadingSample *, void *target) {
        auto *vector = static_cast<double *>(target);
        vector[0] = x, vector[1] = y, vector[2] = z;
    };
}

HostNodeValue TestNode::evaluate(const std::string &outputName, ShadingSample &sample) {
    HostNodeValue value = {.asked = &output(outputName)};
    handler.evaluate(instance, &sample, value.asked, &value);
    return value;
}

HostNodeValue TestNode::evaluateStranger(int type, ShadingSample &sample) {
    HostOutput stranger = {.node = &node, .type = type, .name = "Stranger"};
    HostNodeValue value = {.asked = &stranger};
    handler.evaluate(instance, &sample, value.asked, &value);
    value.asked = nullptr;
    return value;
}

void TestNode::set(unsigned int id, int value) {
    HostPanel *shown = panel();
    if (shown->set(instance, id, &value) != kSetDefault) throw std::runtime_error("the panel refuses the value");
    host.takeLog();
}

void TestNode::set(const std::string &channel, double value) { set(channel, value, 0, 0); }

void TestNode::set(const std::string &channel, double x, double y, double z) {
    HostVParm &target = parm(channel);
    target.value[0] = x, target.value[1] = y, target.value[2] = z;
    render.newTime(instance, 0, 0.0);
    host.takeLog();
}

int TestNode::integer(unsigned int id) { return *static_cast<int *>(panel()->get(instance, id)); }

HostPanel *TestNode::panel() {
    if (!interface_) return nullptr;
    HostNodeInterface record = {.instance = instance, .panel = nullptr, .options = nullptr, .command = nullptr};
    if (interface_(kNodeInterfaceVersion, FakeHost::lookup, &record, nullptr) != kActivateOk)
        throw std::runtime_error("the activation of the panel failed");
    return record.panel;
}

ShadingSample plainSample() {
    ShadingSample sample{};
    sample.geometricNormal[1] = sample.shadingNormal[1] = sample.unbumpedNormal[1] = 1;
    sample.raySource[1] = 1;
    sample.rayLength = 1;
    sample.refractionIndex = 1;
    return sample;
}

} // namespace velm::plugin
