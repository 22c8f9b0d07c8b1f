// "NodeEditorFuncs": networks that nodes hold inside themselves. No exception leaves this file: what an operation
// cannot return as its result stays with the editor as its last error.
#include "host/graph/network.h"
#include "host/services/services.h"
#include "host/services/walk.h"

#include <exception>

namespace velm::host {

namespace {

// Runs `act`; null, or the text of what it threw, which the editor keeps.
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
        return nullptr; // which tells the caller that there is no memory
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

// The root does not count.
int nodeCount(HostNodeEditor *editor) { return static_cast<int>(networkOf(editor)->nodes().size()); }

HostInput *rootInputByName(HostNodeEditor *editor, const char *name) {
    return name ? networkOf(editor)->root().findInput(name) : nullptr;
}

HostInput *rootInputByIndex(HostNodeEditor *editor, int index) {
    return walk::byIndex(networkOf(editor)->root().inputs, index);
}

int state(HostNodeEditor *editor) { return networkOf(editor)->state(); }

void setState(HostNodeEditor *editor, int state) { networkOf(editor)->setState(state); }

// This host shows no windows; what the title would be is remembered.
int openWindow(HostNodeEditor *) { return 0; }
int isWindowOpen(HostNodeEditor *) { return 0; }

HostNode *rootNode(HostNodeEditor *editor) { return &networkOf(editor)->root(); }

void connect(HostOutput *output, HostInput *input) {
    if (!output || !input) return;
    Network *editor = input->node->editor;
    guarded(editor, [&] { networkOf(editor)->connect(*output, *input); });
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
