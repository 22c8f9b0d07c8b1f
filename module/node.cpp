#include "module/node.h"

#include <cstdlib>

namespace velm {
namespace {

constexpr char kOutOfMemory[] = "Couldn't allocate memory for instance.";
constexpr int kLoadedText = 256; // bytes of a saved text that are read back, with its terminator

bool isAnimated(const Parameter &row) {
    return row.holds == Holds::scalar || row.holds == Holds::triple || row.holds == Holds::bareTriple;
}

// The animated parameters that are read, saved, loaded, copied and released.
bool isKept(const Parameter &row) { return row.holds == Holds::scalar || row.holds == Holds::triple; }

double *storedValue(void *instance, const Parameter &row) {
    return row.holds == Holds::scalar ? &fieldAt<ScalarParameter>(instance, row.field).value
                                      : fieldAt<TripleParameter>(instance, row.field).value;
}

// The handle of an animated parameter, null where the host could not create it.
HostVParm *&handle(void *instance, const Parameter &row) {
    return row.holds == Holds::scalar ? fieldAt<ScalarParameter>(instance, row.field).parm
                                      : fieldAt<TripleParameter>(instance, row.field).parm;
}

// ---- Activation ----

template <class Service>
void storeService(const Service *&slot, HostLookup *lookup, const char *name) {
    slot = static_cast<const Service *>(lookup(name, kUseTransient));
}

bool fetchNodeServices(NodeServices &services, HostLookup *lookup) {
    storeService(services.nodeFunc, lookup, HOST_NODE_FUNCS);
    storeService(services.nodeEditorFunc, lookup, HOST_NODE_EDITOR_FUNCS);
    storeService(services.nodeInputFunc, lookup, HOST_NODE_INPUT_FUNCS);
    storeService(services.nodeOutputFunc, lookup, HOST_NODE_OUTPUT_FUNCS);
    return services.nodeFunc && services.nodeEditorFunc && services.nodeInputFunc && services.nodeOutputFunc;
}

bool fetchParameterServices(NodeServices &services, HostLookup *lookup) {
    storeService(services.vparmf, lookup, HOST_VPARM_FUNCS);
    storeService(services.envf, lookup, HOST_ENVELOPE_FUNCS);
    return services.vparmf && services.envf;
}

bool isModelling(HostLookup *lookup) {
    const auto word = reinterpret_cast<uintptr_t>(lookup(HOST_SYSTEM_ID, kUseTransient));
    return (static_cast<uint32_t>(word) & kSystemIdMask) == kSystemModelling;
}

bool fetchFurtherServices(std::span<const FurtherService> rows, HostLookup *lookup) {
    bool complete = true, modelling = false;
    for (const FurtherService &row : rows) {
        if (row.rule == FurtherService::Rule::systemWord) {
            if (!complete) return false;
            modelling = isModelling(lookup);
            continue;
        }
        const bool skipped = modelling && row.rule == FurtherService::Rule::unlessModelling;
        void *found = skipped ? nullptr : lookup(row.name, kUseTransient);
        row.store(found);
        complete = complete && (skipped || found);
    }
    return complete;
}

// ---- Creation ----

void setDefaults(const NodeUnit &unit, void *instance) {
    for (const Parameter &row : unit.parameters) {
        if (row.holds == Holds::integer) fieldAt<int>(instance, row.field) = static_cast<int>(row.initial[0]);
        if (!isAnimated(row)) continue;
        const int components = row.holds == Holds::scalar ? 1 : 3;
        for (int i = 0; i < components; ++i) storedValue(instance, row)[i] = row.initial[i];
    }
}

void setFresh(const NodeUnit &unit, void *instance) {
    if (unit.freshFlags == kNowhere) return;
    int *fresh = &fieldAt<int>(instance, unit.freshFlags);
    for (int thread = 0; thread < kMaxThreads; ++thread) fresh[thread] = 1;
}

void createParameters(const NodeUnit &unit, void *instance, bool late) {
    if (unit.group == kNowhere) return;
    HostChannelGroup *group = fieldAt<HostChannelGroup *>(instance, unit.group);
    for (const Parameter &row : unit.parameters) {
        if (!isAnimated(row) || row.createdLate != late) continue;
        handle(instance, row) = createParameter(*unit.services, row.parmType, row.channel ? row.channel : row.label,
                                                group, storedValue(instance, row));
    }
}

void createGroup(const NodeUnit &unit, void *instance, HostNode *node) {
    if (unit.group == kNowhere) return;
    HostChannelGroup *parent = unit.services->nodeFunc->channelGroup(node);
    fieldAt<HostChannelGroup *>(instance, unit.group) =
        unit.services->envf->createGroup(parent, unit.groupName ? unit.groupName : unit.name);
}

void createInputs(const NodeUnit &unit, void *instance, HostNode *node, HostInputEvent *event, bool late) {
    for (const Parameter &row : unit.parameters) {
        if (row.input == 0 || row.createdLate != late) continue;
        fieldAt<HostInput *>(instance, row.inputField) =
            unit.services->nodeInputFunc->create(node, row.input, row.inputName ? row.inputName : row.label, event);
    }
}

void createOutputs(const NodeUnit &unit, void *instance, HostNode *node) {
    for (const Output &row : unit.outputs)
        fieldAt<HostOutput *>(instance, row.field) = unit.services->nodeOutputFunc->create(node, row.type, row.name);
}

// ---- Saving and loading ----

// Only the low 16 bits of an integer are kept. Files have always been written so, and must stay readable.
void saveInteger(void *instance, const Parameter &row, const HostSaveState *state) {
    const auto value = static_cast<short>(fieldAt<int>(instance, row.field));
    state->writeI2(state->data, &value, 1);
}

// Sign-extended; where the file has run out, what was there stays, cut like any other.
void loadInteger(void *instance, const Parameter &row, const HostLoadState *state) {
    auto value = static_cast<short>(fieldAt<int>(instance, row.field));
    state->readI2(state->data, &value, 1);
    fieldAt<int>(instance, row.field) = value;
}

HostError saveRow(const NodeUnit &unit, void *instance, const Parameter &row, const HostSaveState *state) {
    if (row.holds == Holds::integer) saveInteger(instance, row, state);
    if (row.holds == Holds::text) state->writeString(state->data, &fieldAt<char>(instance, row.field));
    return isKept(row) ? unit.services->vparmf->save(handle(instance, row), state) : nullptr;
}

HostError loadRow(const NodeUnit &unit, void *instance, const Parameter &row, const HostLoadState *state) {
    if (row.holds == Holds::integer) loadInteger(instance, row, state);
    if (row.holds == Holds::text) state->readString(state->data, &fieldAt<char>(instance, row.field), kLoadedText);
    return isKept(row) ? unit.services->vparmf->load(handle(instance, row), state) : nullptr;
}

// Calls `row` for the integers, then the texts, then `between`, then the animated parameters, until one gives an error.
template <class Row, class Between>
HostError inSavedOrder(const NodeUnit &unit, Row row, Between between) {
    for (const Holds holds : {Holds::integer, Holds::text})
        for (const Parameter &parameter : unit.parameters)
            if (parameter.holds == holds) row(parameter);
    if (HostError error = between()) return error;
    for (const Parameter &parameter : unit.parameters)
        if (isKept(parameter))
            if (HostError error = row(parameter)) return error;
    return nullptr;
}

// A failing parameter leaves its block open: the host drops the rest of the node's data with it.
HostError saveBlocks(const NodeUnit &unit, void *instance, const HostSaveState *state) {
    for (const Parameter &row : unit.parameters) {
        if (row.block.id == 0) continue;
        state->beginBlock(state->data, &row.block, 1);
        if (HostError error = saveRow(unit, instance, row, state)) return error;
        state->endBlock(state->data);
    }
    return nullptr;
}

HostError loadBlocks(const NodeUnit &unit, void *instance, const HostLoadState *state) {
    HostBlockId table[kMostBlocks + 1] = {};
    size_t count = 0;
    for (const Parameter &row : unit.parameters)
        if (row.block.id != 0) table[count++] = row.block;
    while (const unsigned int id = state->findBlock(state->data, table)) {
        for (const Parameter &row : unit.parameters)
            if (row.block.id == id)
                if (HostError error = loadRow(unit, instance, row, state)) return error;
        state->endBlock(state->data);
    }
    return nullptr;
}

} // namespace

int activateHandler(const NodeUnit &unit, const NodeCallbacks &callbacks, int version, HostLookup *lookup,
                    void *local) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    if (!fetchNodeServices(*unit.services, lookup)) return kActivateBadGlobal;
    if (!fetchFurtherServices(unit.furtherServices, lookup)) return kActivateBadGlobal;
    if (unit.fetchesParameterServices && !fetchParameterServices(*unit.services, lookup)) return kActivateBadGlobal;
    if (unit.activated) unit.activated();

    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->priv = reinterpret_cast<void *>(lookup);
    handler->instance->create = callbacks.create;
    handler->instance->destroy = callbacks.destroy;
    handler->instance->load = callbacks.load;
    handler->instance->save = callbacks.save;
    handler->instance->copy = callbacks.copy;
    handler->render->init = callbacks.init;
    handler->render->cleanup = callbacks.cleanup;
    handler->render->newTime = callbacks.newTime;
    handler->evaluate = callbacks.evaluate;
    return kActivateOk;
}

void *createInstance(const NodeUnit &unit, HostInputEvent *inputEvent, void *priv, void *node, const char **error) {
    void *instance = std::calloc(1, unit.size);
    if (!instance) {
        *error = kOutOfMemory;
        return nullptr;
    }
    auto *hostNode = static_cast<HostNode *>(node);
    fieldAt<HostNode *>(instance, unit.node) = hostNode;
    if (unit.previewType != kNoPreviewType) unit.services->nodeFunc->setPreviewType(hostNode, unit.previewType);
    unit.services->nodeFunc->setColour(hostNode, unit.colour);
    setFresh(unit, instance);
    setDefaults(unit, instance);
    if (const char *message = unit.prepare ? unit.prepare(instance, priv) : nullptr) {
        *error = message;
        std::free(instance);
        return nullptr;
    }
    createGroup(unit, instance, hostNode);
    for (const bool late : {false, true}) createParameters(unit, instance, late);
    for (const bool late : {false, true}) createInputs(unit, instance, hostNode, inputEvent, late);
    createOutputs(unit, instance, hostNode);
    if (unit.created) unit.created(instance);
    return instance;
}

void destroyInstance(const NodeUnit &unit, void *instance) {
    if (!instance) return;
    if (unit.destroying) unit.destroying(instance);
    for (const Parameter &row : unit.parameters)
        if (isKept(row) && handle(instance, row)) unit.services->vparmf->destroy(handle(instance, row));
    std::free(instance);
}

// Stored values are not copied: the next frame reads them anew. Neither is the state of the render threads.
HostError copyInstance(const NodeUnit &unit, void *to, void *from) {
    for (const Parameter &row : unit.parameters) {
        if (!row.copied) continue;
        if (row.holds == Holds::integer) fieldAt<int>(to, row.field) = fieldAt<int>(from, row.field);
        if (row.holds == Holds::text)
            for (size_t i = 0; i < row.textSize; ++i)
                (&fieldAt<char>(to, row.field))[i] = (&fieldAt<char>(from, row.field))[i];
    }
    for (const Parameter &row : unit.parameters)
        if (isKept(row)) unit.services->vparmf->copy(handle(to, row), handle(from, row));
    return unit.copied ? unit.copied(to, from) : nullptr;
}

HostError loadInstance(const NodeUnit &unit, void *instance, const HostLoadState *state) {
    const auto row = [&](const Parameter &parameter) { return loadRow(unit, instance, parameter, state); };
    const auto between = [&] { return unit.loadMore ? unit.loadMore(instance, state) : nullptr; };
    HostError error = unit.savesBlocks ? loadBlocks(unit, instance, state) : inSavedOrder(unit, row, between);
    if (error) return error;
    readParameters(unit, instance, 0.0);
    if (unit.loaded) unit.loaded(instance);
    return nullptr;
}

HostError saveInstance(const NodeUnit &unit, void *instance, const HostSaveState *state) {
    const auto row = [&](const Parameter &parameter) { return saveRow(unit, instance, parameter, state); };
    const auto between = [&] { return unit.saveMore ? unit.saveMore(instance, state) : nullptr; };
    return unit.savesBlocks ? saveBlocks(unit, instance, state) : inSavedOrder(unit, row, between);
}

HostError initInstance(const NodeUnit &unit, void *instance, int mode) {
    setFresh(unit, instance);
    return unit.init ? unit.init(instance, mode) : nullptr;
}

void cleanUpInstance(const NodeUnit &unit, void *instance) {
    if (unit.cleanup) unit.cleanup(instance);
}

HostError newTimeInstance(const NodeUnit &unit, void *instance, int frame, double time) {
    readParameters(unit, instance, time);
    return unit.newTime ? unit.newTime(instance, frame, time) : nullptr;
}

int inputEvent(const NodeUnit &unit, void *instance, int event) {
    HostPanel *panel = unit.panel != kNowhere ? fieldAt<HostPanel *>(instance, unit.panel) : nullptr;
    if (panel) unit.services->xpanf->refresh(panel);
    if (unit.services->lwupdate && event == kInputSourceDestroyed)
        unit.services->lwupdate(HOST_CLASS_NODE_HANDLER, instance);
    return 1;
}

void readParameters(const NodeUnit &unit, void *instance, double time) {
    for (const Parameter &row : unit.parameters) {
        if (!isKept(row)) continue;
        double value[3] = {}; // room for three, whatever the parameter has
        unit.services->vparmf->getValue(handle(instance, row), time, nullptr, value);
        const int components = row.holds == Holds::scalar ? 1 : 3;
        for (int i = 0; i < components; ++i) storedValue(instance, row)[i] = value[i];
    }
}

HostVParm *createParameter(const NodeServices &services, int type, const char *name, HostChannelGroup *group,
                           const double *value) {
    HostVParm *parm = services.vparmf->create(type, -1);
    if (!parm) return nullptr;
    services.vparmf->setUp(parm, name, group, nullptr, nullptr, nullptr, nullptr);
    services.vparmf->setValue(parm, value);
    return parm;
}

} // namespace velm
