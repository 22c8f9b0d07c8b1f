#include "host/graph/node.h"

#include "host/animation/channel.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"

#include <algorithm>
#include <atomic>

namespace {

// The evaluation of a node without an instance: the asking input keeps its own value.
void setNothing(void *, ShadingSample *, HostOutput *, HostNodeValue *) {}

template <class T>
T *findByName(const std::vector<std::unique_ptr<T>> &all, std::string_view wanted) {
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto &one) { return one->name == wanted; });
    return found == all.end() ? nullptr : found->get();
}

} // namespace

HostNode::HostNode() : evaluate(setNothing) {}

HostNode::~HostNode() {
    for (velm::host::Network *nested : nestedNetworks) nested->loseOwnerNode(); // the instance did not destroy it
    if (group) velm::host::envelopeFuncs()->destroyGroup(group);
}

HostInput *HostNode::findInput(std::string_view wanted) const { return findByName(inputs, wanted); }
HostOutput *HostNode::findOutput(std::string_view wanted) const { return findByName(outputs, wanted); }

namespace velm::host {

namespace {
std::atomic<bool> tooDeep = false;
} // namespace

namespace detail {

void evaluateUnlike(HostOutput *source, int askingType, ShadingSample *sample, void *value) {
    const HostNode *node = source->node;
    if (source->type != kConnectFunction) {
        // "NodeOutputFuncs" converts the node's result when the node sets it.
        HostNodeValue result{value, askingType, source->type};
        node->evaluate(node->instance, sample, source, &result);
        return;
    }
    // Whatever the type of the input, a function is given one double at a time to transform.
    const auto transform = [&](double *number) {
        HostNodeValue result{number, kConnectFunction, kConnectFunction};
        node->evaluate(node->instance, sample, source, &result);
    };
    if (askingType == kConnectInteger) {
        double number = *static_cast<const int *>(value);
        transform(&number);
        *static_cast<int *>(value) = truncateToInt(number);
        return;
    }
    // A material begins with its diffuse colour, the part that is transformed.
    auto *components = static_cast<double *>(value);
    const int count = askingType == kConnectScalar ? 1 : 3;
    for (int i = 0; i < count; ++i) transform(&components[i]);
}

void evaluationTooDeep() { tooDeep.store(true, std::memory_order_relaxed); }
bool wasEvaluationTooDeep() { return tooDeep.load(std::memory_order_relaxed); }

} // namespace detail

bool takeEvaluationTooDeep() {
    assertBetweenFrames();
    return tooDeep.exchange(false);
}

} // namespace velm::host
