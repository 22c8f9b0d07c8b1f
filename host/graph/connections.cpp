// Making and breaking connections.
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/guard/module_call.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

namespace velm::host {

namespace {

// Root nodes without a server speak for whoever owns the editor.
void *instanceOf(const HostNode &node) { return node.instance ? node.instance : node.editor->userData(); }

void tell(HostInput &input, int event, int type) {
    if (!input.event) return;
    const int server = input.node->server ? input.node->server->number() : input.node->editor->maker();
    callModule(server, "input event", [&] { return input.event(instanceOf(*input.node), &input, event, type); });
}

std::string fullName(const HostOutput &output) { return quoted(output.node->name + "." + output.name); }
std::string fullName(const HostInput &input) { return quoted(input.node->name + "." + input.name); }

// The way by which `source` depends on `node`, in the direction in which values flow: "node -> ... -> source". Empty
// when it does not.
std::string dependence(HostNode &node, HostNode &source) {
    std::unordered_map<HostNode *, HostNode *> consumerOf{{&source, nullptr}};
    std::deque<HostNode *> open{&source};
    while (!open.empty() && open.front() != &node) {
        HostNode *current = open.front();
        open.pop_front();
        for (const auto &input : current->inputs)
            if (input->source && consumerOf.emplace(input->source->node, current).second)
                open.push_back(input->source->node);
    }
    if (open.empty()) return {};
    std::string path = node.name;
    for (HostNode *step = consumerOf[&node]; step; step = consumerOf[step]) path += " -> " + step->name;
    return path;
}

template <class T>
std::vector<std::string> namesOf(const std::vector<std::unique_ptr<T>> &all) {
    std::vector<std::string> names;
    names.reserve(all.size());
    for (const auto &one : all) names.push_back(one->name);
    return names;
}

} // namespace

void Network::connect(HostOutput &output, HostInput &input) {
    assertInterface();
    if (input.source == &output) return;
    const std::string what = "cannot connect " + fullName(output) + " to " + fullName(input) + ": ";
    if (output.node->editor != this || input.node->editor != this)
        throw InputError(what + "they are not both nodes of " + quoted(name_));
    if (output.node == root_.get()) throw InputError(what + "the root node feeds nothing");
    const std::string path = dependence(*input.node, *output.node);
    if (!path.empty()) throw InputError(what + "it would close the circle " + path + " -> " + input.node->name);
    breakConnection(input);
    output.consumers.push_back(&input);
    input.source = &output;
    tell(input, kInputConnected, output.type);
    changed();
}

void Network::disconnect(HostInput &input) {
    assertInterface();
    if (!input.source) return;
    breakConnection(input);
    changed();
}

void Network::connect(std::string_view fromNode, std::string_view output, std::string_view toNode,
                      std::string_view input) {
    HostNode &from = node(fromNode);
    HostNode &to = node(toNode);
    HostOutput *source = from.findOutput(output);
    if (!source)
        throw InputError("node " + quoted(from.name) + " has no output " + quoted(output) +
                         suggestion(output, namesOf(from.outputs)));
    HostInput *target = to.findInput(input);
    if (!target)
        throw InputError("node " + quoted(to.name) + " has no input " + quoted(input) +
                         suggestion(input, namesOf(to.inputs)));
    connect(*source, *target);
}

// Both ends of a stand-in take the type of what they are connected to, and another stand-in's are colours.
void Network::connectAsSaved(std::string_view fromNode, std::string_view output, std::string_view toNode,
                             std::string_view input) {
    HostNode &from = node(fromNode);
    HostNode &to = node(toNode);
    const HostInput *target = to.findInput(input);
    if (from.placeholder && !from.findOutput(output))
        createOutput(from, target ? target->type : kConnectColour, std::string(output).c_str());
    const HostOutput *source = from.findOutput(output);
    const bool takesMore = to.placeholder || (&to == root_.get() && to.server);
    if (takesMore && !target && source)
        createInput(to, source->type, std::string(input).c_str(), nullptr)->isKept = true;
    connect(fromNode, output, toNode, input);
}

HostInput *createInput(HostNode &node, int type, const char *name, HostInputEvent *event) {
    assertInterface();
    auto input = std::make_unique<HostInput>();
    input->type = type;
    input->node = &node;
    input->event = event;
    input->name = name ? name : "";
    node.inputs.push_back(std::move(input));
    return node.inputs.back().get();
}

HostOutput *createOutput(HostNode &node, int type, const char *name) {
    assertInterface();
    auto output = std::make_unique<HostOutput>();
    output->type = type;
    output->node = &node;
    output->name = name ? name : "";
    node.outputs.push_back(std::move(output));
    return node.outputs.back().get();
}

void destroyInput(HostInput &input) {
    assertInterface();
    breakConnection(input);
    std::erase_if(input.node->inputs, [&](const auto &one) { return one.get() == &input; });
}

void destroyOutput(HostOutput &output) {
    assertInterface();
    while (!output.consumers.empty()) breakConnection(*output.consumers.front());
    std::erase_if(output.node->outputs, [&](const auto &one) { return one.get() == &output; });
}

void breakConnection(HostInput &input, int event) {
    assertInterface();
    if (!input.source) return;
    std::erase(input.source->consumers, &input);
    input.source = nullptr;
    tell(input, event, 0);
}

} // namespace velm::host
