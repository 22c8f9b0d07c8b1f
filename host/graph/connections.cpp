// Inputs, outputs, and the connections between them.
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/guard/module_call.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace velm::host {

namespace {

// What the input events of a node are called with: a root without a server has its network's user data.
void *instanceOf(const HostNode &node) { return node.instance ? node.instance : node.network->userData(); }

void callEvent(HostInput &input, int event, int type) {
    if (!input.event) return;
    const int server = input.node->server ? input.node->server->number() : input.node->network->owningServer();
    callModule(server, "input event", [&] { return input.event(instanceOf(*input.node), &input, event, type); });
}

std::string fullName(const HostOutput &output) { return inQuotes(output.node->name + "." + output.name); }
std::string fullName(const HostInput &input) { return inQuotes(input.node->name + "." + input.name); }

// The shortest path by which `source` depends on `node`, in the direction in which values flow: "node -> ... ->
// source". Empty when it does not depend on it.
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

// The nodes that can be reached from a node in one direction, found step by step.
class Reach {
  public:
    explicit Reach(HostNode &start) : seen_{&start}, open_{&start} {}

    bool isComplete() const { return open_.empty(); }
    bool has(HostNode &node) const { return seen_.count(&node) != 0; }
    // Looks at the neighbours of one more node, which `visit(node, found)` names by calling `found` with each.
    template <class Visit>
    void step(Visit visit) {
        HostNode *current = open_.front();
        open_.pop_front();
        visit(*current, [&](HostNode *next) {
            if (seen_.insert(next).second) open_.push_back(next);
        });
    }

  private:
    std::unordered_set<HostNode *> seen_;
    std::deque<HostNode *> open_; // seen, but not yet looked at
};

// Whether `source` depends on `node`. Searches from both at once and stops when one search has seen all there is: where
// a network is built, one of the two nodes often has few nodes before or behind it, however large the network is.
bool depends(HostNode &source, HostNode &node) {
    Reach before(source), behind(node);
    while (!before.isComplete() && !behind.isComplete()) {
        before.step([](const HostNode &at, auto found) {
            for (const auto &input : at.inputs)
                if (input->source) found(input->source->node);
        });
        behind.step([](const HostNode &at, auto found) {
            for (const auto &output : at.outputs)
                for (const HostInput *consumer : output->consumers) found(consumer->node);
        });
    }
    return before.isComplete() ? before.has(node) : behind.has(source);
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
    const auto refuse = [&](const std::string &reason) {
        throw InputError(fmt::format("cannot connect {} to {}: {}", fullName(output), fullName(input), reason));
    };
    if (output.node->network != this || input.node->network != this)
        refuse("they are not both nodes of " + inQuotes(name_));
    if (output.node == root_.get()) refuse("the root node feeds nothing");
    if (depends(*output.node, *input.node))
        refuse(
            fmt::format("it would close the cycle {} -> {}", dependence(*input.node, *output.node), input.node->name));
    breakConnection(input);
    output.consumers.push_back(&input);
    input.source = &output;
    callEvent(input, kInputConnected, output.type);
    observers_.notify([&](NetworkObserver &observer) { observer.connected(output, input); });
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
        throw InputError(fmt::format("node {} has no output {}{}", inQuotes(from.name), inQuotes(output),
                                     suggestion(output, namesOf(from.outputs))));
    HostInput *target = to.findInput(input);
    if (!target)
        throw InputError(fmt::format("node {} has no input {}{}", inQuotes(to.name), inQuotes(input),
                                     suggestion(input, namesOf(to.inputs))));
    connect(*source, *target);
}

// A placeholder's new input or output gets the type of what it is connected to. An output that feeds another
// placeholder, whose type is unknown as well, is a colour.
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
        createInput(to, source->type, std::string(input).c_str(), nullptr)->isForeign = true;
    connect(fromNode, output, toNode, input);
}

HostInput *createInput(HostNode &node, int type, const char *name, HostInputEvent *event) {
    assertInterface();
    auto input = std::make_unique<HostInput>();
    input->type = type;
    input->node = &node;
    input->event = event;
    input->name = name ? name : "";
    HostInput *created = node.inputs.emplace_back(std::move(input)).get();
    node.network->noteSocketsChanged(node);
    return created;
}

HostOutput *createOutput(HostNode &node, int type, const char *name) {
    assertInterface();
    auto output = std::make_unique<HostOutput>();
    output->type = type;
    output->node = &node;
    output->name = name ? name : "";
    HostOutput *created = node.outputs.emplace_back(std::move(output)).get();
    node.network->noteSocketsChanged(node);
    return created;
}

void destroyInput(HostInput &input) {
    assertInterface();
    breakConnection(input);
    HostNode &node = *input.node;
    std::erase_if(node.inputs, [&](const auto &one) { return one.get() == &input; });
    node.network->noteSocketsChanged(node);
}

void destroyOutput(HostOutput &output) {
    assertInterface();
    while (!output.consumers.empty()) breakConnection(*output.consumers.front());
    HostNode &node = *output.node;
    std::erase_if(node.outputs, [&](const auto &one) { return one.get() == &output; });
    node.network->noteSocketsChanged(node);
}

void breakConnection(HostInput &input, int event) {
    assertInterface();
    if (!input.source) return;
    HostOutput &source = *std::exchange(input.source, nullptr);
    std::erase(source.consumers, &input);
    callEvent(input, event, 0);
    input.node->network->observers().notify([&](NetworkObserver &observer) { observer.disconnected(source, input); });
}

} // namespace velm::host
