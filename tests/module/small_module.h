// What the small modules of tests have in common: a descriptor, the services of connections, and a node that passes its
// input through. Each module has its own copy.
#pragma once

#include "module/host.h"

namespace small_module {

// Takes a table of servers, as the module interface describes it, and the two callbacks.
constexpr HostModuleDescriptor descriptor(const HostServer *servers, void *(*startup)(), void (*shutdown)(void *)) {
    return {
        .syncWord = kModuleSyncWord,
        .version = kModuleVersion,
        .platform = kPlatformMacintosh,
        .startup = startup,
        .shutdown = shutdown,
        .servers = servers,
    };
}

// Null until they are looked up.
inline const HostNodeInputFuncs *inputs = nullptr;
inline const HostNodeOutputFuncs *outputs = nullptr;

// For the activation of a node: checks the version, and looks up the services of connections. Gives kActivateOk, or why
// the node cannot be activated.
inline int lookUpConnections(int version, HostLookup *lookup) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    inputs = static_cast<const HostNodeInputFuncs *>(lookup(HOST_NODE_INPUT_FUNCS, kUseTransient));
    outputs = static_cast<const HostNodeOutputFuncs *>(lookup(HOST_NODE_OUTPUT_FUNCS, kUseTransient));
    return inputs && outputs ? kActivateOk : kActivateBadGlobal;
}

// The connections of a node with one input and one output for colours.
struct Connections {
    HostInput *in;
    HostOutput *out;
};

inline Connections connect(void *node, const char *output) {
    return {.in = inputs->create(static_cast<HostNode *>(node), kConnectColour, "In", nullptr),
            .out = outputs->create(static_cast<HostNode *>(node), kConnectColour, output)};
}

// Gives out the input's colour; `colour` where nothing is connected.
inline void passThrough(const Connections &own, ShadingSample *sample, HostNodeValue *value, double (&colour)[3]) {
    inputs->evaluate(own.in, sample, colour);
    outputs->setValue(value, colour);
}

} // namespace small_module
