// A small module that meets all requirements of the host or, built with a fault (faults.h), violates one of them. It
// has two nodes: "Mutant Sum", with parameters, a panel and state for each render thread, and "Mutant Pass", without
// any.
#include "module/host.h"

#include "tests/module/small_module.h"
#include "tests/mutants/faults.h"
#include "tests/mutants/sequences.h"

#include <cstdlib>
#include <cstring>

namespace {

using small_module::Connections;
using small_module::inputs;
using small_module::outputs;

struct Sum {
    HostNode *node;
    HostPanel *panel;
    HostChannelGroup *group;
    HostVParm *parameter; // "Amount"
    double amount;
    int mode;
    char name[64];
    HostInput *amountInput, *modeInput;
    HostOutput *sum, *tint;
    int fresh[kMaxThreads];
    double first[kMaxThreads]; // x of each thread's first sample since init
    faults::Past past;
};

const HostNodeFuncs *nodes;
const HostVParmFuncs *parameters;
const HostEnvelopeFuncs *envelopes;
const HostPanelFuncs *panels;
HostInstanceUpdate *updated;

Sum &self(void *instance) { return *static_cast<Sum *>(instance); }

int inputEvent(void *instance, HostInput *, int, int) {
    if (self(instance).panel) panels->refresh(self(instance).panel);
    return 1;
}

void readParameters(Sum &own, double time) {
    double value[3] = {0, 0, 0};
    parameters->getValue(own.parameter, time, nullptr, value);
    own.amount = value[0];
}

void *create(void *, void *node, const char **error) {
    auto *own = static_cast<Sum *>(std::calloc(1, sizeof(Sum)));
    if (!own) {
        *error = faults::message("Out of memory.");
        return nullptr;
    }
    own->node = static_cast<HostNode *>(node);
    nodes->setPreviewType(own->node, kPreviewOff);
    std::strcpy(own->name, "none");
    own->group = envelopes->createGroup(nodes->channelGroup(own->node), "Mutant Sum");
    own->parameter = parameters->create(kParmFloat, -1);
    parameters->setUp(own->parameter, "Amount", own->group, nullptr, nullptr, nullptr, nullptr);
    own->amount = 1;
    parameters->setValue(own->parameter, &own->amount);
    own->modeInput = inputs->create(own->node, kConnectInteger, "Mode", inputEvent);
    own->amountInput = inputs->create(own->node, kConnectScalar, "Amount", inputEvent);
    own->sum = outputs->create(own->node, kConnectScalar, faults::outputName("Sum"));
    own->tint = outputs->create(own->node, kConnectColour, "Tint");
    for (int &fresh : own->fresh) fresh = 1;
    faults::created(own);
    return own;
}

void destroy(void *instance) {
    if (!instance) return;
    faults::destroyed();
    faults::destroyed(self(instance).past);
    for (int i = 0; i < faults::destructions(); ++i) parameters->destroy(self(instance).parameter);
    if (!faults::keepsInstance()) std::free(instance);
}

HostError copy(void *to, void *from) {
    self(to).mode = self(from).mode;
    std::strcpy(self(to).name, self(from).name);
    faults::copied(self(to).mode, self(from).mode);
    faults::copied(self(to).past, self(from).past, self(from).mode);
    return parameters->copy(self(to).parameter, self(from).parameter);
}

HostError save(void *instance, const HostSaveState *state) {
    Sum &own = self(instance);
    const short mode = static_cast<short>(faults::savedMode(own.mode));
    state->writeI2(state->data, &mode, 1);
    state->writeString(state->data, own.name);
    faults::wroteName(state);
    faults::saved(own.mode);
    return parameters->save(own.parameter, state);
}

HostError load(void *instance, const HostLoadState *state) {
    Sum &own = self(instance);
    short mode = 0;
    const int count = state->readI2(state->data, &mode, 1);
    own.mode = faults::loadedMode(mode, own.mode, count);
    own.name[0] = 0;
    state->readString(state->data, own.name, sizeof own.name);
    const HostError error = parameters->load(own.parameter, state);
    if (!error) readParameters(own, 0);
    faults::loaded(state, own.mode, own.name);
    return error;
}

HostError init(void *instance, int) {
    for (int &fresh : self(instance).fresh) fresh = 1;
    faults::initialised();
    faults::started(self(instance).past);
    return nullptr;
}

void cleanup(void *) { faults::ended(); }

HostError newTime(void *instance, int, double time) {
    faults::newTime(time);
    readParameters(self(instance), time);
    return nullptr;
}

constexpr const char *kModes[] = {"Times", "Plus", "First", nullptr};
constexpr int kModeCount = 3;

int within(int mode) { return mode < 0 ? 0 : mode >= kModeCount ? kModeCount - 1 : mode; }

void evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    Sum &own = self(instance);
    double amount = faults::amountAfter(own.past, own.amount);
    int mode = faults::modeAfter(own.past, own.mode);
    inputs->evaluate(own.amountInput, sample, &amount);
    inputs->evaluate(own.modeInput, sample, &mode);
    const int thread = sample->threadIndex;
    if (faults::isFresh(own.fresh[thread], thread)) {
        own.fresh[thread] = 0;
        own.first[thread] = sample->position[0];
    }
    faults::evaluating(nodes, own.node, sample);
    faults::trusting(sample, mode, within(mode), amount, own.amount);
    const double height = sample->position[1];
    const double sums[kModeCount] = {height * amount, height + amount, own.first[thread]};
    const double sum = faults::withThreads(faults::result(sums[within(mode)], sample), instance, thread);
    const double tint[3] = {sum, amount, 0.5};
    if (faults::leavesOut(output == own.tint)) return;
    if (output == own.tint)
        outputs->setValue(faults::target(value), tint);
    else
        outputs->setValue(faults::target(value), &sum);
}

enum { kMode = 0x8001, kAmount, kName };

void *get(void *instance, unsigned int id) {
    Sum &own = self(instance);
    faults::wasRead(own.mode);
    switch (id) {
    case kMode: return inputs->isConnected(own.modeInput) ? nullptr : &own.mode;
    case kAmount: return inputs->isConnected(own.amountInput) ? nullptr : static_cast<void *>(own.parameter);
    case kName: return own.name;
    default: return nullptr;
    }
}

int set(void *instance, unsigned int id, void *value) {
    Sum &own = self(instance);
    if (id == kMode) own.mode = *static_cast<int *>(value);
    faults::wasSet(own.mode);
    if (id == kName) {
        std::strncpy(own.name, static_cast<const char *>(value), sizeof own.name - 1);
        own.name[sizeof own.name - 1] = 0;
    }
    return id >= kMode && id <= kName ? kSetDefault : kSetUnknown;
}

int changed(HostPanel *panel, unsigned int, unsigned int, int event) {
    if (event == kEventSet) updated(HOST_CLASS_NODE_HANDLER, panels->getData(panel, 0));
    return 0;
}

const HostPanelValue kValues[] = {
    {kMode, "Mode", "integer"}, {kAmount, "Amount", "float-env"}, {kName, "Name", "string"}, {0, nullptr, nullptr}};

HostPanel *panelOf(Sum &own) {
    if (own.panel) return own.panel;
    static const HostHint hints[] = {
        {.word = kHintChangeNotify}, {.change = changed}, {.word = kHintAddControl}, {.word = kMode},
        {.text = "iPopChoice"},      {.word = kMode},     {.word = kHintStringList}, {.word = kMode},
        {.texts = kModes},           {.word = 0},         {.word = kHintAddControl}, {.word = kAmount},
        {.text = "float-env"},       {.word = kAmount},   {.word = kHintAddControl}, {.word = kName},
        {.text = "string"},          {.word = kName},     {.word = kHintEnd},
    };
    own.panel = panels->create(kPanelForm, nullptr);
    panels->hint(own.panel, 0, hints);
    panels->describe(own.panel, kValues, get, set);
    panels->viewInstance(own.panel, &own);
    panels->setData(own.panel, 0, &own);
    return own.panel;
}

// The second node passes its input through.
void *createPass(void *, void *node, const char **error) {
    auto *own = static_cast<Connections *>(std::malloc(sizeof(Connections)));
    if (!own) {
        *error = "Out of memory.";
        return nullptr;
    }
    *own = small_module::connect(node, "Out");
    return own;
}

void destroyPass(void *instance) { std::free(instance); }
HostError copyNothing(void *, void *) { return nullptr; }
HostError loadNothing(void *, const HostLoadState *) { return nullptr; }
HostError saveNothing(void *, const HostSaveState *) { return nullptr; }

void evaluatePass(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    double colour[3] = {sample->position[0], sample->position[1], sample->position[2]};
    small_module::passThrough(*static_cast<Connections *>(instance), sample, value, colour);
}

// ---- Activation -----------------------------------------------------------------------------------------------------

bool lookUp(HostLookup *lookup) {
    nodes = static_cast<const HostNodeFuncs *>(lookup(HOST_NODE_FUNCS, kUseTransient));
    inputs = static_cast<const HostNodeInputFuncs *>(lookup(HOST_NODE_INPUT_FUNCS, kUseTransient));
    outputs = static_cast<const HostNodeOutputFuncs *>(lookup(HOST_NODE_OUTPUT_FUNCS, kUseTransient));
    parameters = static_cast<const HostVParmFuncs *>(lookup(HOST_VPARM_FUNCS, kUseTransient));
    envelopes = static_cast<const HostEnvelopeFuncs *>(lookup(HOST_ENVELOPE_FUNCS, kUseTransient));
    return nodes && inputs && outputs && parameters && envelopes;
}

int activateSum(int version, HostLookup *lookup, void *local, void *) {
    auto *handler = static_cast<HostNodeHandler *>(local);
    faults::activating(handler, evaluate);
    if (version != kNodeHandlerVersion && !faults::takesAnyVersion()) return kActivateBadVersion;
    if (!lookUp(lookup)) return faults::withoutService(kActivateBadGlobal, handler, evaluate);
    handler->instance->priv = nullptr;
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->instance->copy = copy;
    handler->instance->load = load;
    handler->instance->save = save;
    handler->render->init = init;
    handler->render->cleanup = cleanup;
    handler->render->newTime = newTime;
    handler->evaluate = evaluate;
    faults::activated(handler);
    return kActivateOk;
}

int activatePanel(int version, HostLookup *lookup, void *local, void *) {
    if (version != kNodeInterfaceVersion) return kActivateBadVersion;
    updated = reinterpret_cast<HostInstanceUpdate *>(lookup(HOST_INSTANCE_UPDATE, kUseTransient));
    panels = static_cast<const HostPanelFuncs *>(lookup(HOST_PANEL_FUNCS, kUseTransient));
    if (!updated || !panels) return kActivateBadGlobal;
    auto *interface = static_cast<HostNodeInterface *>(local);
    interface->panel = panelOf(self(interface->instance));
    interface->options = nullptr;
    interface->command = nullptr;
    return kActivateOk;
}

int activatePass(int version, HostLookup *lookup, void *local, void *) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    if (!lookUp(lookup)) return kActivateBadGlobal;
    auto *handler = static_cast<HostNodeHandler *>(local);
    *handler->instance = {.priv = nullptr,
                          .create = createPass,
                          .destroy = destroyPass,
                          .copy = copyNothing,
                          .load = loadNothing,
                          .save = saveNothing,
                          .describe = nullptr};
    handler->evaluate = evaluatePass;
    return kActivateOk;
}

const HostTag kSumTags[] = {{faults::displayName("Sum"), kTagUserName}, {"Mutants", kTagMenu}, {nullptr, 0}};
const HostTag kPassTags[] = {{"Pass", kTagUserName}, {"Mutants", kTagMenu}, {nullptr, 0}};

const HostServer kServers[] = {
    {HOST_CLASS_NODE_HANDLER, "Mutant Sum", activateSum, kSumTags},
    {HOST_CLASS_NODE_INTERFACE, "Mutant Sum", activatePanel, kSumTags},
    {HOST_CLASS_NODE_HANDLER, faults::secondName("Mutant Pass"), activatePass, kPassTags},
    {nullptr, nullptr, nullptr, nullptr},
};

void *startup() { return faults::started(); }
void shutdown(void *) {}

} // namespace

extern "C" __attribute__((visibility("default"))) const HostModuleDescriptor _mod_descrip =
    small_module::descriptor(kServers, startup, shutdown);
