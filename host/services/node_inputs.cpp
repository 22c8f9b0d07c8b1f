// "NodeInputFuncs": the inputs of a node. A null input counts as an unconnected one, since a server may use an input
// that it could not create.
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/services/services.h"
#include "host/services/sockets.h"

namespace velm::host {

namespace {

// Null for an unknown type.
HostInput *create(HostNode *node, int type, const char *name, HostInputEvent *event) {
    return valueSize(type) > 0 ? createInput(*node, type, name, event) : nullptr;
}

void destroy(HostNode *, HostInput *input) {
    if (input) destroyInput(*input);
}

int evaluate(HostInput *input, ShadingSample *sample, void *value) {
    assertRender();
    return input ? evaluateInput(input, sample, value) : 0;
}

int isConnected(HostInput *input) { return input && input->source ? 1 : 0; }

HostInput *byIndex(HostNode *node, int index) { return atIndex(node->inputs, index); }
int indexOf(HostInput *input) { return indexInList(input->node->inputs, input); }
HostInput *first(HostNode *node) { return byIndex(node, 1); }
HostInput *next(HostInput *input) { return byIndex(input->node, indexOf(input) + 1); }
HostInput *previous(HostInput *input) { return byIndex(input->node, indexOf(input) - 1); }
int count(HostNode *node) { return static_cast<int>(node->inputs.size()); }

void disconnectInput(HostNode *node, HostInput *input) {
    if (input) node->network->disconnect(*input);
}

HostNode *nodeOf(HostInput *input) { return input->node; }

} // namespace

const HostNodeInputFuncs *nodeInputFuncs() {
    static constexpr HostNodeInputFuncs kTable = {
        .create = create,
        .destroy = destroy,
        .evaluate = evaluate,
        .isConnected = isConnected,
        .first = first,
        .next = next,
        .previous = previous,
        .count = count,
        .byIndex = byIndex,
        .indexOf = indexOf,
        .disconnect = disconnectInput,
        .node = nodeOf,
    };
    return &kTable;
}

} // namespace velm::host
