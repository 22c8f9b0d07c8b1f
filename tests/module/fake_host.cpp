#include "tests/module/fake_host.h"

#include "tests/module/recorded_state.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace velm::plugin {
namespace {

FakeHost *currentHost = nullptr;

FakeHost &host() { return *currentHost; }

int components(const HostVParm &parm) { return parm.type & 1 ? 3 : 1; }

std::string nameOf(const HostVParm *parm) { return parm ? parm->channel : "null"; }

// Names a parameter by its node, which is the parent of its group, and its channel.
std::string fullNameOf(const HostVParm *parm) {
    return parm ? parm->group->parent->name + "/" + parm->channel : "null";
}

std::string listOf(const double *values, int count) {
    std::ostringstream text;
    for (int i = 0; i < count; ++i) text << (i ? " " : "") << values[i];
    return text.str();
}

const HostNodeFuncs kNodeFuncs = [] {
    HostNodeFuncs funcs{};
    funcs.nodeName = [](HostNode *node) {
        host().note("nodeName");
        return node->name.c_str();
    };
    funcs.channelGroup = [](HostNode *node) {
        host().note("channelGroup");
        return node->group;
    };
    funcs.setColour = [](HostNode *node, const int rgb[3]) {
        host().note("setColour ", rgb[0], " ", rgb[1], " ", rgb[2]);
        std::copy_n(rgb, 3, node->colour.begin());
    };
    funcs.setPreviewType = [](HostNode *node, int type) {
        host().note("setPreviewType ", type);
        node->previewType = type;
    };
    funcs.updatePreview = [](HostNode *node) { host().note("updatePreview ", node->name); };
    return funcs;
}();

const HostNodeEditorFuncs
    kNodeEditorFuncs{}; // every node looks it up, and none of those tested with this host calls it

// The result of operations whose result has no meaning: callers rely only on what was written for them.
constexpr int kNoAnswer = 0;

const HostNodeInputFuncs kNodeInputFuncs = [] {
    HostNodeInputFuncs funcs{};
    funcs.create = [](HostNode *node, int type, const char *name, HostInputEvent *event) {
        host().note("createInput ", name, " ", type);
        return &host().inputs.emplace_back(HostInput{.node = node, .type = type, .name = name, .event = event});
    };
    funcs.evaluate = [](HostInput *input, ShadingSample *sample, void *value) {
        if (host().logsEvaluation) host().note("evaluate ", input->name);
        if (input->source) input->source(sample, value);
        return kNoAnswer;
    };
    funcs.isConnected = [](HostInput *input) { return input->source ? 2 : 0; }; // any number except 0 means yes
    return funcs;
}();

const HostNodeOutputFuncs kNodeOutputFuncs = [] {
    HostNodeOutputFuncs funcs{};
    funcs.create = [](HostNode *node, int type, const char *name) {
        host().note("createOutput ", name, " ", type);
        return &host().outputs.emplace_back(HostOutput{.node = node, .type = type, .name = name});
    };
    funcs.setValue = [](HostNodeValue *value, const void *result) {
        if (host().logsEvaluation) host().note("setValue");
        ++value->timesSet;
        const int type = value->asked->type;
        if (type == kConnectInteger)
            std::memcpy(&value->integer, result, sizeof value->integer);
        else
            std::memcpy(value->numbers, result, (type == kConnectScalar ? 1 : 3) * sizeof(double));
    };
    return funcs;
}();

HostVParm *createParm(int type, int subtype) {
    host().note("createParm ", type, " ", subtype);
    if (host().failingParms.count(host().parmsAsked++)) return nullptr;
    return &host().parms.emplace_back(HostVParm{.type = type, .subtype = subtype});
}

void setUpParm(HostVParm *parm, const char *channel, HostChannelGroup *group, void *texture, HostParmEvent *event,
               const char *plugIn, void *userData) {
    const bool plain = !texture && !event && !plugIn && !userData;
    host().note("setUpParm ", channel, " in ", group->name, plain ? "" : " with more than the channel");
    parm->channel = channel;
    parm->group = group;
}

HostError saveParm(HostVParm *parm, const HostSaveState *state) {
    host().note("saveParm ", nameOf(parm));
    if (host().parmsSaved++ == host().failingSave) return FakeHost::kSaveError;
    if (parm)
        RecordedState::of(state).entries.push_back({.kind = RecordedState::Entry::Kind::parm,
                                                    .text = parm->channel,
                                                    .values = {parm->value, parm->value + components(*parm)}});
    return nullptr;
}

HostError loadParm(HostVParm *parm, const HostLoadState *state) {
    host().note("loadParm ", nameOf(parm));
    if (host().parmsLoaded++ == host().failingLoad) return FakeHost::kLoadError;
    const RecordedState::Entry *entry = RecordedState::of(state).take(RecordedState::Entry::Kind::parm);
    if (entry && parm) std::copy(entry->values.begin(), entry->values.end(), parm->value);
    return nullptr;
}

// Written to the components that a parameter does not have: callers must pass room for three.
constexpr double kBeyondTheValue = 777;

double getParm(HostVParm *parm, double time, ShadingSample *sample, double *value) {
    host().note("getParm ", nameOf(parm), " at ", time, sample ? " with a sample" : "");
    if (!parm) return kNoAnswer;
    std::fill(value, value + 3, kBeyondTheValue);
    if (parm->overTime)
        parm->overTime(time, value);
    else
        std::copy(parm->value, parm->value + components(*parm), value);
    return kNoAnswer;
}

const HostVParmFuncs kVParmFuncs = [] {
    HostVParmFuncs funcs{};
    funcs.create = createParm;
    funcs.destroy = [](HostVParm *parm) {
        host().note("destroyParm ", nameOf(parm), parm->destroyed ? " again" : "");
        parm->destroyed = true;
    };
    funcs.setUp = setUpParm;
    funcs.copy = [](HostVParm *to, HostVParm *from) -> HostError {
        host().note("copyParm ", fullNameOf(to), " <- ", fullNameOf(from));
        if (to && from) std::copy(from->value, from->value + 3, to->value);
        return host().copiesFail ? FakeHost::kCopyError : nullptr;
    };
    funcs.load = loadParm;
    funcs.save = saveParm;
    funcs.getValue = getParm;
    funcs.setValue = [](HostVParm *parm, const double *value) {
        host().note("setParm ", nameOf(parm), " ", listOf(value, components(*parm)));
        std::copy(value, value + components(*parm), parm->value);
        return components(*parm);
    };
    return funcs;
}();

const HostEnvelopeFuncs kEnvelopeFuncs = [] {
    HostEnvelopeFuncs funcs{};
    funcs.createGroup = [](HostChannelGroup *parent, const char *name) {
        host().note("createGroup ", name, " in ", parent->name);
        return &host().groups.emplace_back(HostChannelGroup{.name = name, .parent = parent});
    };
    return funcs;
}();

const HostPanelFuncs kPanelFuncs = [] {
    HostPanelFuncs funcs{};
    funcs.create = [](int kind, const void *controls) -> HostPanel * {
        host().note("createPanel ", kind, controls ? " with controls" : "");
        return host().panelsFail ? nullptr : &host().panels.emplace_back(HostPanel{.kind = kind});
    };
    funcs.describe = [](HostPanel *panel, const HostPanelValue *values, HostPanelGetter *get, HostPanelSetter *set) {
        host().note("describe");
        panel->values = values;
        panel->get = get;
        panel->set = set;
    };
    funcs.hint = [](HostPanel *panel, unsigned int id, const HostHint *hints) {
        host().note("hint ", id);
        panel->hints = hints;
    };
    funcs.getData = [](HostPanel *panel, unsigned int id) {
        host().note("getData ", id);
        return panel->data[id];
    };
    funcs.setData = [](HostPanel *panel, unsigned int id, void *data) {
        host().note("setData ", id);
        panel->data[id] = data;
    };
    funcs.viewInstance = [](HostPanel *panel, void *instance) {
        host().note("viewInstance");
        panel->viewed = instance;
    };
    funcs.refresh = [](HostPanel *panel) {
        host().note("refresh");
        ++panel->refreshes;
    };
    return funcs;
}();

void instanceUpdate(const char *className, void *instance) {
    host().note("instanceUpdate ", className);
    host().updated.push_back(instance);
}

const HostBackdropInfo kBackdropInfo = [] {
    HostBackdropInfo info{};
    info.backdrop = [](double time, const double direction[3], double colour[3]) {
        if (host().backdrop) host().backdrop(time, direction, colour);
    };
    return info;
}();

// Looked up only by node classes of the tests, which compare the pointers.
const HostImageList kImageList{};
const HostNodeUtilityFuncs kUtilityFuncs{};
int fileRequest(int, HostFileRequest *) { return 0; }

template <class Table>
void *tablePointer(const Table &table) {
    return const_cast<Table *>(&table);
}

} // namespace

FakeHost::FakeHost() { currentHost = this; }
FakeHost::~FakeHost() { currentHost = nullptr; }
FakeHost &FakeHost::current() { return *currentHost; }

void *FakeHost::lookup(const char *service, int use) {
    const std::map<std::string, void *> services = {
        {HOST_NODE_FUNCS, tablePointer(kNodeFuncs)},
        {HOST_NODE_EDITOR_FUNCS, tablePointer(kNodeEditorFuncs)},
        {HOST_NODE_INPUT_FUNCS, tablePointer(kNodeInputFuncs)},
        {HOST_NODE_OUTPUT_FUNCS, tablePointer(kNodeOutputFuncs)},
        {HOST_VPARM_FUNCS, tablePointer(kVParmFuncs)},
        {HOST_ENVELOPE_FUNCS, tablePointer(kEnvelopeFuncs)},
        {HOST_PANEL_FUNCS, tablePointer(kPanelFuncs)},
        {HOST_INSTANCE_UPDATE, reinterpret_cast<void *>(instanceUpdate)},
        {HOST_SYSTEM_ID, reinterpret_cast<void *>(host().systemWord)}, // no address
        {HOST_BACKDROP_INFO, tablePointer(kBackdropInfo)},
        {HOST_TIME_INFO, &host().time},
        {HOST_IMAGE_LIST, tablePointer(kImageList)},
        {HOST_NODE_UTILITY_FUNCS, tablePointer(kUtilityFuncs)},
        {HOST_FILE_REQUEST, reinterpret_cast<void *>(fileRequest)},
    };
    host().note("lookup ", service, use == kUseTransient ? "" : " not transient");
    const auto found = services.find(service);
    return found == services.end() || host().missing.count(service) ? nullptr : found->second;
}

std::vector<std::string> FakeHost::takeLog() { return std::exchange(log_, {}); }

HostNode &FakeHost::addNode(const std::string &name) {
    HostChannelGroup &group = groups.emplace_back(HostChannelGroup{.name = name, .parent = nullptr});
    return nodes.emplace_back(HostNode{.name = name, .group = &group});
}

int FakeHost::liveParms() const {
    return static_cast<int>(
        std::count_if(parms.begin(), parms.end(), [](const HostVParm &parm) { return !parm.destroyed; }));
}

} // namespace velm::plugin
