// A module that does harm, as the environment variable VELM_ATTACK says: "crash @ create" names the fault (faults.h)
// and the place at which it happens. Without the variable, the module works.
#include "module/host.h"

#include "tests/attack/faults.h"
#include "tests/module/small_module.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using evil::answer;
using evil::lastNode;
using small_module::inputs;
using small_module::outputs;

const HostPanelFuncs *panels;

[[gnu::noinline]] void faultAt(const char *place) {
    const char *wanted = std::getenv("VELM_ATTACK");
    if (!wanted) return;
    const char *middle = std::strstr(wanted, " @ ");
    if (!middle || std::strcmp(middle + 3, place) != 0) return;
    const std::string name(wanted, middle);
    for (const evil::Fault &fault : evil::kFaults)
        if (name == fault.name) fault.act();
}

struct AtLoad {
    AtLoad() { faultAt("loading"); }
    ~AtLoad() { faultAt("unloading"); }
} atLoad;

// ---- The node ----

struct Instance {
    small_module::Connections connections;
    HostPanel *panel;
    int amount;
};

void *create(void *, void *node, const char **error) {
    lastNode = node;
    faultAt("create");
    auto *own = static_cast<Instance *>(std::calloc(1, sizeof(Instance)));
    if (!own || answer) {
        *error = answer;
        return nullptr;
    }
    own->connections = small_module::connect(node, "Color");
    return own;
}

void destroy(void *instance) {
    faultAt("destroy");
    std::free(instance);
}

HostError copy(void *to, void *from) {
    faultAt("copy");
    static_cast<Instance *>(to)->amount = static_cast<Instance *>(from)->amount;
    return answer;
}

HostError load(void *instance, const HostLoadState *state) {
    faultAt("load");
    state->readI4(state->data, &static_cast<Instance *>(instance)->amount, 1);
    return answer;
}

HostError save(void *instance, const HostSaveState *state) {
    faultAt("save");
    state->writeI4(state->data, &static_cast<Instance *>(instance)->amount, 1);
    return answer;
}

HostError init(void *, int) {
    faultAt("init");
    return answer;
}

HostError newTime(void *, int, double) {
    faultAt("newTime");
    return answer;
}

void cleanup(void *) { faultAt("cleanup"); }

void evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    double colour[3] = {0.5, 0.2, 0.1};
    inputs->evaluate(static_cast<Instance *>(instance)->connections.in, sample, colour);
    faultAt("evaluate");
    outputs->setValue(value, colour);
}

// ---- The panel ----

constexpr unsigned int kAmount = 0x8001;

void *get(void *instance, unsigned int id) {
    faultAt("get");
    return id == kAmount ? &static_cast<Instance *>(instance)->amount : nullptr;
}

int set(void *instance, unsigned int id, void *value) {
    faultAt("set");
    if (id != kAmount) return kSetUnknown;
    static_cast<Instance *>(instance)->amount = *static_cast<int *>(value);
    return kSetDefault;
}

const HostPanelValue kValues[] = {{kAmount, "Amount", "integer"}, {0, nullptr, nullptr}};
const HostHint kHints[] = {
    {.word = kHintAddControl}, {.word = kAmount}, {.text = "integer"}, {.word = kAmount}, {.word = kHintEnd}};

int activatePanel(int version, HostLookup *lookup, void *local, void *) {
    faultAt("activate panel");
    if (version != kNodeInterfaceVersion) return kActivateBadVersion;
    panels = static_cast<const HostPanelFuncs *>(lookup(HOST_PANEL_FUNCS, kUseTransient));
    if (!panels) return kActivateBadGlobal;
    auto *interface = static_cast<HostNodeInterface *>(local);
    auto *own = static_cast<Instance *>(interface->instance);
    if (!own->panel) {
        own->panel = panels->create(kPanelForm, nullptr);
        panels->hint(own->panel, 0, kHints);
        panels->describe(own->panel, kValues, get, set);
        panels->viewInstance(own->panel, own);
    }
    interface->panel = own->panel;
    return kActivateOk;
}

// ---- The module ----

int activate(int version, HostLookup *lookup, void *local, void *) {
    faultAt("activate");
    if (const int result = small_module::lookUpConnections(version, lookup); result != kActivateOk) return result;
    auto *handler = static_cast<HostNodeHandler *>(local);
    *handler->instance = {.priv = nullptr,
                          .create = create,
                          .destroy = destroy,
                          .copy = copy,
                          .load = load,
                          .save = save,
                          .describe = nullptr};
    *handler->render = {.init = init, .cleanup = cleanup, .newTime = newTime};
    handler->evaluate = evaluate;
    return kActivateOk;
}

const HostTag kTags[] = {{"Evil", kTagUserName}, {"Evil", kTagMenu}, {nullptr, 0}};
const HostServer kServers[] = {
    {HOST_CLASS_NODE_HANDLER, "Evil Node", activate, kTags},
    {HOST_CLASS_NODE_INTERFACE, "Evil Node", activatePanel, kTags},
    {nullptr, nullptr, nullptr, nullptr},
};

void *startup() {
    faultAt("startup");
    static int word;
    return &word;
}

void shutdown(void *) { faultAt("shutdown"); }

} // namespace

constinit HostModuleDescriptor _mod_descrip = small_module::descriptor(kServers, startup, shutdown);
