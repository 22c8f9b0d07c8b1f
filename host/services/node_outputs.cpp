// "NodeOutputFuncs": the outputs of a node, and the way of a result to whoever asked for it.
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/services/services.h"
#include "host/services/walk.h"

#include <cstring>

namespace velm::host {

namespace {

// Null for a type that is none.
HostOutput *create(HostNode *node, int type, const char *name) {
    return valueSize(type) > 0 ? createOutput(*node, type, name) : nullptr;
}

void destroy(HostNode *, HostOutput *output) {
    if (output) destroyOutput(*output);
}

// `to` and `from` may be the same place. By way of a copy of a size that the compiler knows: a few moves, and no call.
template <class Value>
void copyValue(void *to, const void *from) {
    Value copy;
    std::memcpy(&copy, from, sizeof copy);
    std::memcpy(to, &copy, sizeof copy);
}

// Where the types are alike, the result goes straight into what the asking node holds; it may be that very place.
void setValue(HostNodeValue *value, const void *result) {
    assertRender();
    if (value->outputType != value->askingType) {
        convertValue(value->outputType, result, value->askingType, value->holder);
        return;
    }
    switch (value->outputType) {
    case kConnectColour:
    case kConnectVector: copyValue<double[3]>(value->holder, result); break;
    case kConnectInteger: copyValue<int>(value->holder, result); break;
    case kConnectMaterial: copyValue<HostMaterial>(value->holder, result); break;
    default: copyValue<double>(value->holder, result); // a scalar, and what a function made of one
    }
}

void *getValue(HostNodeValue *value) {
    assertRender();
    return value->holder;
}

int askingType(HostNodeValue *value) {
    assertRender();
    return value->askingType;
}

HostOutput *byIndex(HostNode *node, int index) { return walk::byIndex(node->outputs, index); }
int indexOf(HostOutput *output) { return walk::indexOf(output->node->outputs, output); }
HostOutput *first(HostNode *node) { return byIndex(node, 1); }
HostOutput *next(HostOutput *output) { return byIndex(output->node, indexOf(output) + 1); }
HostOutput *previous(HostOutput *output) { return byIndex(output->node, indexOf(output) - 1); }
int count(HostNode *node) { return static_cast<int>(node->outputs.size()); }
HostNode *nodeOf(HostOutput *output) { return output->node; }

} // namespace

const HostNodeOutputFuncs *nodeOutputFuncs() {
    static constexpr HostNodeOutputFuncs kTable = {
        .create = create,
        .destroy = destroy,
        .setValue = setValue,
        .getValue = getValue,
        .askingType = askingType,
        .first = first,
        .next = next,
        .previous = previous,
        .count = count,
        .byIndex = byIndex,
        .indexOf = indexOf,
        .node = nodeOf,
    };
    return &kTable;
}

} // namespace velm::host
