#include "host/graph/node.h"

#include "host/animation/channel.h"
#include "host/base/colour.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace {

// What a node gives that has no evaluation: nothing, so that whoever asks keeps its own value.
void setNothing(void *, ShadingSample *, HostOutput *, HostNodeValue *) {}

template <class T>
T *findByName(const std::vector<std::unique_ptr<T>> &all, std::string_view wanted) {
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto &one) { return one->name == wanted; });
    return found == all.end() ? nullptr : found->get();
}

} // namespace

HostNode::HostNode() : evaluate(setNothing) {}

HostNode::~HostNode() {
    for (velm::host::Network *inside : nested) inside->loseHolder(); // its instance left it behind
    if (group) velm::host::envelopeFuncs()->destroyGroup(group);
}

HostInput *HostNode::findInput(std::string_view wanted) const { return findByName(inputs, wanted); }
HostOutput *HostNode::findOutput(std::string_view wanted) const { return findByName(outputs, wanted); }

namespace velm::host {

namespace {

int truncated(double value) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    if (value != value) return 0;
    if (value <= kLowest) return kLowest;
    if (value >= kHighest) return kHighest;
    return static_cast<int>(value);
}

// Any value as three components; a scalar in each.
struct Triplet {
    double red, green, blue;
};

Triplet readTriplet(int type, const void *from) {
    switch (type) {
    case kConnectColour:
    case kConnectVector:
    case kConnectMaterial: { // a material begins with its diffuse colour
        const auto *components = static_cast<const double *>(from);
        return {components[0], components[1], components[2]};
    }
    case kConnectInteger: {
        const double value = *static_cast<const int *>(from);
        return {value, value, value};
    }
    default: {
        const double value = *static_cast<const double *>(from);
        return {value, value, value};
    }
    }
}

double readScalar(int type, const void *from) {
    switch (type) {
    case kConnectColour:
    case kConnectVector:
    case kConnectMaterial: {
        const auto *components = static_cast<const double *>(from);
        return luminance(components[0], components[1], components[2]);
    }
    case kConnectInteger: return *static_cast<const int *>(from);
    default: return *static_cast<const double *>(from);
    }
}

std::atomic<bool> tooDeep = false;

} // namespace

void convertValue(int fromType, const void *from, int toType, void *to) {
    switch (toType) {
    case kConnectColour:
    case kConnectVector: {
        const Triplet value = readTriplet(fromType, from);
        auto *components = static_cast<double *>(to);
        components[0] = value.red;
        components[1] = value.green;
        components[2] = value.blue;
        break;
    }
    case kConnectMaterial: {
        HostMaterial material{};
        if (fromType == kConnectMaterial) {
            material = *static_cast<const HostMaterial *>(from);
        } else {
            const Triplet value = readTriplet(fromType, from);
            material.diffuse[0] = value.red;
            material.diffuse[1] = value.green;
            material.diffuse[2] = value.blue;
        }
        *static_cast<HostMaterial *>(to) = material;
        break;
    }
    case kConnectInteger: {
        // An int of a double's range is exact on the way, so that integer -> integer loses nothing.
        *static_cast<int *>(to) = truncated(readScalar(fromType, from));
        break;
    }
    default: *static_cast<double *>(to) = readScalar(fromType, from);
    }
}

int valueSize(int type) {
    switch (type) {
    case kConnectColour:
    case kConnectVector: return 3 * sizeof(double);
    case kConnectScalar:
    case kConnectFunction: return sizeof(double);
    case kConnectInteger: return sizeof(int);
    case kConnectMaterial: return sizeof(HostMaterial);
    default: return 0;
    }
}

const char *typeName(int type) {
    switch (type) {
    case kConnectColour: return "colour";
    case kConnectScalar: return "scalar";
    case kConnectVector: return "vector";
    case kConnectInteger: return "integer";
    case kConnectFunction: return "function";
    case kConnectMaterial: return "material";
    default: return "unknown";
    }
}

namespace detail {

void evaluateUnlike(HostOutput *source, int askingType, ShadingSample *sample, void *value) {
    const HostNode *node = source->node;
    if (source->type != kConnectFunction) {
        // The node's result is converted as it is set, see NodeOutputFuncs.
        HostNodeValue result{value, askingType, source->type};
        node->evaluate(node->instance, sample, source, &result);
        return;
    }
    // A function finds one double after another to transform, whatever the input holds.
    const auto transform = [&](double *found) {
        HostNodeValue result{found, kConnectFunction, kConnectFunction};
        node->evaluate(node->instance, sample, source, &result);
    };
    if (askingType == kConnectInteger) {
        double found = *static_cast<const int *>(value);
        transform(&found);
        *static_cast<int *>(value) = truncated(found);
        return;
    }
    // A material begins with its diffuse colour, which is what is transformed.
    auto *components = static_cast<double *>(value);
    const int count = askingType == kConnectScalar ? 1 : 3;
    for (int i = 0; i < count; ++i) transform(&components[i]);
}

void evaluationTooDeep() { tooDeep.store(true, std::memory_order_relaxed); }

} // namespace detail

bool takeEvaluationTooDeep() {
    assertBetweenFrames();
    return tooDeep.exchange(false);
}

} // namespace velm::host
