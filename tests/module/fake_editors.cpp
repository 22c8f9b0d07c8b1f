#include "tests/module/fake_editors.h"

#include "tests/module/recorded_state.h"

#include <algorithm>

namespace velm::plugin {
namespace {

FakeEditors *currentEditors = nullptr;

FakeEditors &editors() { return *currentEditors; }
FakeHost &host() { return FakeHost::current(); }

HostNodeEditor *createEditor(const char *name, const char *title, const HostRootDescription *root, void *userData) {
    host().note("createEditor ", name, ", ", title);
    if (editors().creationFails) return nullptr;
    return &editors().editors.emplace_back(
        HostNodeEditor{.description = *root, .userData = userData, .root = &host().addNode("root")});
}

HostInput *addRootInput(HostNodeEditor *editor, int type, const char *name, HostInputEvent *event) {
    host().note("addRootInput ", name, " ", type, event ? " with an event" : "");
    return &host().inputs.emplace_back(HostInput{.node = editor->root, .type = type, .name = name, .event = event});
}

// A network is saved as a text.
HostError saveEditor(HostNodeEditor *editor, const HostSaveState *state) {
    host().note("saveEditor");
    if (!editors().answer) RecordedState::of(state).text(editor->network);
    return editors().answer;
}

HostError loadEditor(HostNodeEditor *editor, const HostLoadState *state) {
    host().note("loadEditor");
    const RecordedState::Entry *entry = RecordedState::of(state).take(RecordedState::Entry::Kind::text);
    if (entry) editor->network = entry->text;
    return editors().answer;
}

const HostNodeEditorFuncs kEditorFuncs = [] {
    HostNodeEditorFuncs funcs{};
    funcs.create = createEditor;
    funcs.destroy = [](HostNodeEditor *editor) {
        host().note("destroyEditor", editor->destroyed ? " again" : "");
        editor->destroyed = true;
    };
    funcs.rename = [](const char *title, HostNodeEditor *) { host().note("rename ", title); };
    funcs.setEvent = [](HostNodeEditor *editor, HostEditorEvent *event) {
        host().note("setEvent");
        editor->event = event;
    };
    funcs.copy = [](HostNodeEditor *to, HostNodeEditor *from) {
        host().note("copyEditor");
        to->network = from->network;
        return editors().answer;
    };
    funcs.save = saveEditor;
    funcs.load = loadEditor;
    funcs.init = [](HostNodeEditor *, int mode) {
        host().note("initEditor ", mode);
        return editors().answer;
    };
    funcs.newTime = [](HostNodeEditor *, int frame, double time) {
        host().note("newTimeEditor ", frame, " ", time);
        return editors().answer;
    };
    funcs.cleanup = [](HostNodeEditor *) { host().note("cleanupEditor"); };
    funcs.addRootInput = addRootInput;
    funcs.setChannelGroup = [](HostNodeEditor *editor, HostChannelGroup *group) {
        host().note("setChannelGroup ", group->name);
        editor->group = group;
    };
    funcs.setAutosize = [](HostNodeEditor *editor, HostEditorAutosize *autosize) {
        host().note("setAutosize");
        editor->autosize = autosize;
    };
    funcs.userData = [](HostNodeEditor *editor) { return editor->userData; };
    funcs.openWindow = [](HostNodeEditor *) {
        host().note("openWindow");
        return 1;
    };
    funcs.rootNode = [](HostNodeEditor *editor) {
        host().note("rootNode");
        return editor->root;
    };
    return funcs;
}();

const HostNodeUtilityFuncs kUtilities = [] {
    HostNodeUtilityFuncs funcs{};
    funcs.autosize = [](HostNode *node, double scale[3], double position[3]) {
        host().note("autosize ", node->name);
        std::copy_n(editors().extent, 3, scale);
        std::fill_n(position, 3, 50.0); // of the node's object, which does not affect its extent
    };
    return funcs;
}();

HostNodeOutputFuncs plainOutputs;

void setValue(HostNodeValue *value, const void *result) {
    if (value->asked->type != kConnectMaterial) return plainOutputs.setValue(value, result);
    ++value->timesSet;
    editors().materials.push_back(*static_cast<const HostMaterial *>(result));
}

} // namespace

FakeEditors::FakeEditors() { currentEditors = this; }
FakeEditors::~FakeEditors() { currentEditors = nullptr; }

void *FakeEditors::lookup(const char *service, int use) {
    void *found = FakeControls::lookup(service, use);
    if (!found) return nullptr;
    const std::string name = service;
    if (name == HOST_NODE_EDITOR_FUNCS) return const_cast<HostNodeEditorFuncs *>(&kEditorFuncs);
    if (name == HOST_NODE_UTILITY_FUNCS) return const_cast<HostNodeUtilityFuncs *>(&kUtilities);
    if (name != HOST_NODE_OUTPUT_FUNCS) return found;
    plainOutputs = *static_cast<HostNodeOutputFuncs *>(found);
    static HostNodeOutputFuncs outputs;
    outputs = plainOutputs;
    outputs.setValue = setValue;
    return &outputs;
}

} // namespace velm::plugin
