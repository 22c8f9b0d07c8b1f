// "NodeEditorFuncs": networks that nodes hold inside themselves. No exception leaves this file: what an operation
// cannot return as its result stays with the editor as its last error.
#include "host/graph/network.h"
#include "host/services/lookup.h"
#include "host/services/walk.h"

#include <exception>

namespace velm {

namespace {

// Runs `act`; null, or the text of what it threw, which the editor keeps.
template <class Act>
HostError guarded(HostNodeEditor *editor, Act act) {
    try {
        act();
        return nullptr;
    } catch (const std::exception &error) {
        editor->setLastError(error.what());
        return editor->lastError().c_str();
    }
}

HostNodeEditor *create(const char *name, const char *title, const HostRootDescription *root, void *userData) {
    const char *shown = name ? name : "";
    try {
        return new HostNodeEditor(shown, title ? title : shown, root, userData);
    } catch (const std::exception &) {
        return nullptr; // which tells the caller that there is no memory
    }
}

void destroy(HostNodeEditor *editor) { delete editor; }

void rename(const char *title, HostNodeEditor *editor) { editor->setTitle(title ? title : ""); }

void setEvent(HostNodeEditor *editor, HostEditorEvent *event) { editor->setEvent(event); }

HostError copy(HostNodeEditor *to, HostNodeEditor *from) {
    return guarded(to, [&] { to->copyFrom(*from); });
}

HostError save(HostNodeEditor *editor, const HostSaveState *state) {
    return guarded(editor, [&] { editor->save(*state); });
}

HostError load(HostNodeEditor *editor, const HostLoadState *state) {
    return guarded(editor, [&] { editor->load(*state); });
}

HostError init(HostNodeEditor *editor, int mode) {
    return guarded(editor, [&] { editor->init(mode); });
}

HostError newTime(HostNodeEditor *editor, int frame, double time) {
    return guarded(editor, [&] { editor->newTime(frame, time); });
}

void cleanup(HostNodeEditor *editor) { editor->cleanup(); }

HostInput *addRootInput(HostNodeEditor *editor, int type, const char *name, HostInputEvent *event) {
    return nodeInputFuncs()->create(&editor->root(), type, name, event);
}

void setChannelGroup(HostNodeEditor *editor, HostChannelGroup *group) { editor->setChannelGroup(group); }

void setAutosize(HostNodeEditor *editor, HostEditorAutosize *autosize) { editor->setAutosize(autosize); }

void setUserData(HostNodeEditor *editor, void *userData) { editor->setUserData(userData); }

void *userData(HostNodeEditor *editor) { return editor->userData(); }

// The root does not count.
int nodeCount(HostNodeEditor *editor) { return static_cast<int>(editor->nodes().size()); }

HostInput *rootInputByName(HostNodeEditor *editor, const char *name) {
    return name ? editor->root().findInput(name) : nullptr;
}

HostInput *rootInputByIndex(HostNodeEditor *editor, int index) { return walk::byIndex(editor->root().inputs, index); }

int state(HostNodeEditor *editor) { return editor->state(); }

void setState(HostNodeEditor *editor, int state) { editor->setState(state); }

// This host shows no windows; what the title would be is remembered.
int openWindow(HostNodeEditor *) { return 0; }
int isWindowOpen(HostNodeEditor *) { return 0; }

HostNode *rootNode(HostNodeEditor *editor) { return &editor->root(); }

void connect(HostOutput *output, HostInput *input) {
    if (!output || !input) return;
    HostNodeEditor *editor = input->node->editor;
    guarded(editor, [&] { editor->connect(*output, *input); });
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

} // namespace velm
