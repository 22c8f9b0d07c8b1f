// "NodeOutputFuncs": the outputs of a node, and the results of evaluations.
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/services/services.h"
#include "host/services/sockets.h"

#include <cstring>

namespace velm::host {

namespace {

// Null for an unknown type.
HostOutput *create(HostNode *node, int type, const char *name) {
    return valueSize(type) > 0 ? createOutput(*node, type, name) : nullptr;
}

void destroy(HostNode *, HostOutput *output) {
    if (output) destroyOutput(*output);
}

// `to` and `from` may be the same address. The intermediate copy has a size known to the compiler, which makes this a
// few moves without a call.
template <class Value>
void copyValue(void *to, const void *from) {
    Value copy;
    std::memcpy(&copy, from, sizeof copy);
    std::memcpy(to, &copy, sizeof copy);
}

// A result of the asking input's type is copied straight into the asking node's value, which may be the result itself.
void setValue(HostNodeValue *value, const void *result) {
    assertRender();
    if (value->outputType != value->askingType) {
        convertValue(value->outputType, result, value->askingType, value->target);
        return;
    }
    switch (value->outputType) {
    case kConnectColour:
    case kConnectVector: copyValue<double[3]>(value->target, result); break;
    case kConnectInteger: copyValue<int>(value->target, result); break;
    case kConnectMaterial: copyValue<HostMaterial>(value->target, result); break;
    default: copyValue<double>(value->target, result); // a scalar, or a scalar that a function has transformed
    }
}

void *getValue(HostNodeValue *value) {
    assertRender();
    return value->target;
}

int askingType(HostNodeValue *value) {
    assertRender();
    return value->askingType;
}

HostOutput *outputByIndex(HostNode *node, int index) { return atIndex(node->outputs, index); }
int indexOf(HostOutput *output) { return indexInList(output->node->outputs, output); }
HostOutput *firstOutput(HostNode *node) { return outputByIndex(node, 1); }
HostOutput *next(HostOutput *output) { return outputByIndex(output->node, indexOf(output) + 1); }
HostOutput *previous(HostOutput *output) { return outputByIndex(output->node, indexOf(output) - 1); }
int outputCount(HostNode *node) { return static_cast<int>(node->outputs.size()); }
HostNode *nodeOf(HostOutput *output) { return output->node; }

} // namespace

const HostNodeOutputFuncs *nodeOutputFuncs() {
    static constexpr HostNodeOutputFuncs kTable = {
        .create = create,
        .destroy = destroy,
        .setValue = setValue,
        .getValue = getValue,
        .askingType = askingType,
        .first = firstOutput,
        .next = next,
        .previous = previous,
        .count = outputCount,
        .byIndex = outputByIndex,
        .indexOf = indexOf,
        .node = nodeOf,
    };
    return &kTable;
}

} // namespace velm::host
