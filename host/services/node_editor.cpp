// "NodeEditorFuncs": networks nested in nodes. No exception leaves this file: the network keeps the message of an error
// that an operation cannot return as its result (Network::lastError).
#include "host/graph/network.h"
#include "host/load/dialogs.h"
#include "host/services/services.h"
#include "host/services/sockets.h"

#include <exception>

namespace velm::host {

namespace {

// Runs `act` and returns null, or the message of the exception that it threw, which the network keeps.
template <class Act>
HostError guarded(HostNodeEditor *editor, Act act) {
    try {
        act();
        return nullptr;
    } catch (const std::exception &error) {
        networkOf(editor)->setLastError(error.what());
        return networkOf(editor)->lastError().c_str();
    }
}

HostNodeEditor *create(const char *name, const char *title, const HostRootDescription *root, void *userData) {
    const char *shown = name ? name : "";
    try {
        return new Network(shown, title ? title : shown, root, userData);
    } catch (const std::exception &) {
        return nullptr; // the interface has no room for a reason
    }
}

void destroy(HostNodeEditor *editor) { delete networkOf(editor); }

void rename(const char *title, HostNodeEditor *editor) { networkOf(editor)->setTitle(title ? title : ""); }

void setEvent(HostNodeEditor *editor, HostEditorEvent *event) { networkOf(editor)->setEvent(event); }

HostError copy(HostNodeEditor *to, HostNodeEditor *from) {
    return guarded(to, [&] { networkOf(to)->copyFrom(*networkOf(from)); });
}

HostError save(HostNodeEditor *editor, const HostSaveState *state) {
    return guarded(editor, [&] { networkOf(editor)->save(*state); });
}

HostError load(HostNodeEditor *editor, const HostLoadState *state) {
    return guarded(editor, [&] { networkOf(editor)->load(*state); });
}

HostError init(HostNodeEditor *editor, int mode) {
    return guarded(editor, [&] { networkOf(editor)->init(mode); });
}

HostError newTime(HostNodeEditor *editor, int frame, double time) {
    return guarded(editor, [&] { networkOf(editor)->newTime(frame, time); });
}

void cleanup(HostNodeEditor *editor) { networkOf(editor)->cleanup(); }

HostInput *addRootInput(HostNodeEditor *editor, int type, const char *name, HostInputEvent *event) {
    return nodeInputFuncs()->create(&networkOf(editor)->root(), type, name, event);
}

void setChannelGroup(HostNodeEditor *editor, HostChannelGroup *group) { networkOf(editor)->setChannelGroup(group); }

void setAutosize(HostNodeEditor *editor, HostEditorAutosize *autosize) { networkOf(editor)->setAutosize(autosize); }

void setUserData(HostNodeEditor *editor, void *userData) { networkOf(editor)->setUserData(userData); }

void *userData(HostNodeEditor *editor) { return networkOf(editor)->userData(); }

// Without the root.
int nodeCount(HostNodeEditor *editor) { return static_cast<int>(networkOf(editor)->nodes().size()); }

HostInput *rootInputByName(HostNodeEditor *editor, const char *name) {
    return name ? networkOf(editor)->root().findInput(name) : nullptr;
}

HostInput *rootInputByIndex(HostNodeEditor *editor, int index) {
    return atIndex(networkOf(editor)->root().inputs, index);
}

int state(HostNodeEditor *editor) { return networkOf(editor)->state(); }

void setState(HostNodeEditor *editor, int state) { networkOf(editor)->setState(state); }

int openWindow(HostNodeEditor *editor) {
    return showDialog([&](Dialogs &dialogs) { return dialogs.openNetwork(*editor); }) ? 1 : 0;
}
int isWindowOpen(HostNodeEditor *editor) { return dialogs().isNetworkOpen(*editor) ? 1 : 0; }

HostNode *rootNode(HostNodeEditor *editor) { return &networkOf(editor)->root(); }

void connect(HostOutput *output, HostInput *input) {
    if (!output || !input) return;
    Network *network = input->node->network;
    guarded(network, [&] { network->connect(*output, *input); });
}

} // namespace

const HostNodeEditorFuncs *nodeEditorFuncs() {
    static constexpr HostNodeEditorFuncs kTable = {
        .create = create,
        .destroy = destroy,
        .rename = rename,
        .setEvent = setEvent,
        .copy = copy,
        .save = save,
        .load = load,
        .init = init,
        .newTime = newTime,
        .cleanup = cleanup,
        .addRootInput = addRootInput,
        .setChannelGroup = setChannelGroup,
        .setAutosize = setAutosize,
        .setUserData = setUserData,
        .userData = userData,
        .nodeCount = nodeCount,
        .rootInputByName = rootInputByName,
        .rootInputByIndex = rootInputByIndex,
        .state = state,
        .setState = setState,
        .openWindow = openWindow,
        .isWindowOpen = isWindowOpen,
        .rootNode = rootNode,
        .connect = connect,
    };
    return &kTable;
}

} // namespace velm::host
