#include "module/node.h"

#include <cstdlib>

namespace velm::plugin {
namespace {

constexpr char kOutOfMemory[] = "Couldn't allocate memory for instance.";
constexpr int kLoadedText = 256; // the most bytes of a saved text that are loaded, with its terminator

bool isAnimated(const Parameter &row) {
    return row.holds == Holds::scalar || row.holds == Holds::vec3 || row.holds == Holds::bareVec3;
}

// Whether the row's animated parameter is read, saved, loaded, copied and destroyed.
bool isPersisted(const Parameter &row) { return row.holds == Holds::scalar || row.holds == Holds::vec3; }

double *storedValue(void *instance, const Parameter &row) {
    return row.holds == Holds::scalar ? &fieldAt<ScalarParameter>(instance, row.field).value
                                      : fieldAt<Vec3Parameter>(instance, row.field).value;
}

// The host parameter of an animated parameter; null if the host could not create it.
HostVParm *&handle(void *instance, const Parameter &row) {
    return row.holds == Holds::scalar ? fieldAt<ScalarParameter>(instance, row.field).parm
                                      : fieldAt<Vec3Parameter>(instance, row.field).parm;
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

void setDefaults(const NodeClass &nodeClass, void *instance) {
    for (const Parameter &row : nodeClass.parameters) {
        if (row.holds == Holds::integer) fieldAt<int>(instance, row.field) = static_cast<int>(row.initial[0]);
        if (!isAnimated(row)) continue;
        const int components = row.holds == Holds::scalar ? 1 : 3;
        for (int i = 0; i < components; ++i) storedValue(instance, row)[i] = row.initial[i];
    }
}

void setFresh(const NodeClass &nodeClass, void *instance) {
    if (nodeClass.freshFlags == kNowhere) return;
    int *fresh = &fieldAt<int>(instance, nodeClass.freshFlags);
    for (int thread = 0; thread < kMaxThreads; ++thread) fresh[thread] = 1;
}

// Creates the host parameters of the rows that are created last, or of those that are not.
void createParameters(const NodeClass &nodeClass, void *instance, bool last) {
    if (nodeClass.record.group == kNowhere) return;
    HostChannelGroup *group = fieldAt<HostChannelGroup *>(instance, nodeClass.record.group);
    for (const Parameter &row : nodeClass.parameters) {
        if (!isAnimated(row) || row.createdLast != last) continue;
        handle(instance, row) =
            createParameter(*nodeClass.services, row.parmType, row.channel ? row.channel : row.label, group,
                            storedValue(instance, row));
    }
}

void createGroup(const NodeClass &nodeClass, void *instance, HostNode *node) {
    if (nodeClass.record.group == kNowhere) return;
    HostChannelGroup *parent = nodeClass.services->nodeFunc->channelGroup(node);
    fieldAt<HostChannelGroup *>(instance, nodeClass.record.group) =
        nodeClass.services->envf->createGroup(parent, nodeClass.groupName ? nodeClass.groupName : nodeClass.name);
}

void createInputs(const NodeClass &nodeClass, void *instance, HostNode *node, HostInputEvent *event, bool last) {
    for (size_t i = 0; i < nodeClass.parameters.size(); ++i) {
        const Parameter &row = nodeClass.parameters[i];
        if (row.input == 0 || row.createdLast != last) continue;
        fieldAt<HostInput *>(instance, inputOffset(nodeClass, i)) = nodeClass.services->nodeInputFunc->create(
            node, row.input, row.inputName ? row.inputName : row.label, event);
    }
}

void createOutputs(const NodeClass &nodeClass, void *instance, HostNode *node) {
    for (const Output &row : nodeClass.outputs)
        fieldAt<HostOutput *>(instance, nodeClass.record.connections + row.field) =
            nodeClass.services->nodeOutputFunc->create(node, row.type, row.name);
}

// ---- Saving and loading ----

// Only the low 16 bits of an integer are saved: existing files are written so and must stay readable.
void saveInteger(void *instance, const Parameter &row, const HostSaveState *state) {
    const auto value = static_cast<short>(fieldAt<int>(instance, row.field));
    state->writeI2(state->data, &value, 1);
}

// Sign-extends the saved 16 bits. If the file ends before, the value stays as it is, cut to 16 bits like any other.
void loadInteger(void *instance, const Parameter &row, const HostLoadState *state) {
    auto value = static_cast<short>(fieldAt<int>(instance, row.field));
    state->readI2(state->data, &value, 1);
    fieldAt<int>(instance, row.field) = value;
}

HostError saveRow(const NodeClass &nodeClass, void *instance, const Parameter &row, const HostSaveState *state) {
    if (row.holds == Holds::integer) saveInteger(instance, row, state);
    if (row.holds == Holds::text) state->writeString(state->data, &fieldAt<char>(instance, row.field));
    return isPersisted(row) ? nodeClass.services->vparmf->save(handle(instance, row), state) : nullptr;
}

HostError loadRow(const NodeClass &nodeClass, void *instance, const Parameter &row, const HostLoadState *state) {
    if (row.holds == Holds::integer) loadInteger(instance, row, state);
    if (row.holds == Holds::text) state->readString(state->data, &fieldAt<char>(instance, row.field), kLoadedText);
    return isPersisted(row) ? nodeClass.services->vparmf->load(handle(instance, row), state) : nullptr;
}

// Calls `row` for the integers, then for the texts, then `between`, then `row` for the animated parameters. Stops at
// the first error of the last two and returns it.
template <class Row, class Between>
HostError inSavedOrder(const NodeClass &nodeClass, Row row, Between between) {
    for (const Holds holds : {Holds::integer, Holds::text})
        for (const Parameter &parameter : nodeClass.parameters)
            if (parameter.holds == holds) row(parameter);
    if (HostError error = between()) return error;
    for (const Parameter &parameter : nodeClass.parameters)
        if (isPersisted(parameter))
            if (HostError error = row(parameter)) return error;
    return nullptr;
}

// If a parameter fails, its block stays open: the host discards the rest of the node's data with it.
HostError saveBlocks(const NodeClass &nodeClass, void *instance, const HostSaveState *state) {
    for (const Parameter &row : nodeClass.parameters) {
        if (row.block.id == 0) continue;
        state->beginBlock(state->data, &row.block, 1);
        if (HostError error = saveRow(nodeClass, instance, row, state)) return error;
        state->endBlock(state->data);
    }
    return nullptr;
}

HostError loadBlocks(const NodeClass &nodeClass, void *instance, const HostLoadState *state) {
    HostBlockId table[kMostBlocks + 1] = {};
    size_t count = 0;
    for (const Parameter &row : nodeClass.parameters)
        if (row.block.id != 0) table[count++] = row.block;
    while (const unsigned int id = state->findBlock(state->data, table)) {
        for (const Parameter &row : nodeClass.parameters)
            if (row.block.id == id)
                if (HostError error = loadRow(nodeClass, instance, row, state)) return error;
        state->endBlock(state->data);
    }
    return nullptr;
}

} // namespace

int activateHandler(const NodeClass &nodeClass, const NodeCallbacks &callbacks, int version, HostLookup *lookup,
                    void *local) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    if (!fetchNodeServices(*nodeClass.services, lookup)) return kActivateBadGlobal;
    if (!fetchFurtherServices(nodeClass.furtherServices, lookup)) return kActivateBadGlobal;
    if (nodeClass.fetchesParameterServices && !fetchParameterServices(*nodeClass.services, lookup))
        return kActivateBadGlobal;
    if (nodeClass.activated) nodeClass.activated();

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

void *createInstance(const NodeClass &nodeClass, HostInputEvent *inputEvent, void *priv, void *node,
                     const char **error) {
    void *instance = std::calloc(1, nodeClass.record.size);
    if (!instance) {
        *error = kOutOfMemory;
        return nullptr;
    }
    auto *hostNode = static_cast<HostNode *>(node);
    fieldAt<HostNode *>(instance, nodeClass.record.node) = hostNode;
    if (nodeClass.previewType != kNoPreviewType)
        nodeClass.services->nodeFunc->setPreviewType(hostNode, nodeClass.previewType);
    nodeClass.services->nodeFunc->setColour(hostNode, nodeClass.colour);
    setFresh(nodeClass, instance);
    setDefaults(nodeClass, instance);
    if (const char *message = nodeClass.prepare ? nodeClass.prepare(instance, priv) : nullptr) {
        *error = message;
        std::free(instance);
        return nullptr;
    }
    createGroup(nodeClass, instance, hostNode);
    for (const bool last : {false, true}) createParameters(nodeClass, instance, last);
    for (const bool last : {false, true}) createInputs(nodeClass, instance, hostNode, inputEvent, last);
    createOutputs(nodeClass, instance, hostNode);
    if (nodeClass.created) nodeClass.created(instance);
    return instance;
}

void destroyInstance(const NodeClass &nodeClass, void *instance) {
    if (!instance) return;
    if (nodeClass.destroying) nodeClass.destroying(instance);
    for (const Parameter &row : nodeClass.parameters)
        if (isPersisted(row) && handle(instance, row)) nodeClass.services->vparmf->destroy(handle(instance, row));
    std::free(instance);
}

// Stored values are not copied, since the next frame reads them anew. Neither is the state of the render threads.
HostError copyInstance(const NodeClass &nodeClass, void *to, void *from) {
    for (const Parameter &row : nodeClass.parameters) {
        if (!row.copied) continue;
        if (row.holds == Holds::integer) fieldAt<int>(to, row.field) = fieldAt<int>(from, row.field);
        if (row.holds == Holds::text)
            for (size_t i = 0; i < row.textSize; ++i)
                (&fieldAt<char>(to, row.field))[i] = (&fieldAt<char>(from, row.field))[i];
    }
    for (const Parameter &row : nodeClass.parameters)
        if (isPersisted(row)) nodeClass.services->vparmf->copy(handle(to, row), handle(from, row));
    return nodeClass.copied ? nodeClass.copied(to, from) : nullptr;
}

HostError loadInstance(const NodeClass &nodeClass, void *instance, const HostLoadState *state) {
    const auto row = [&](const Parameter &parameter) { return loadRow(nodeClass, instance, parameter, state); };
    const auto between = [&] { return nodeClass.loadMore ? nodeClass.loadMore(instance, state) : nullptr; };
    HostError error =
        nodeClass.savesBlocks ? loadBlocks(nodeClass, instance, state) : inSavedOrder(nodeClass, row, between);
    if (error) return error;
    readParameters(nodeClass, instance, 0.0);
    if (nodeClass.loaded) nodeClass.loaded(instance);
    return nullptr;
}

HostError saveInstance(const NodeClass &nodeClass, void *instance, const HostSaveState *state) {
    const auto row = [&](const Parameter &parameter) { return saveRow(nodeClass, instance, parameter, state); };
    const auto between = [&] { return nodeClass.saveMore ? nodeClass.saveMore(instance, state) : nullptr; };
    return nodeClass.savesBlocks ? saveBlocks(nodeClass, instance, state) : inSavedOrder(nodeClass, row, between);
}

HostError initInstance(const NodeClass &nodeClass, void *instance, int mode) {
    setFresh(nodeClass, instance);
    return nodeClass.init ? nodeClass.init(instance, mode) : nullptr;
}

void cleanUpInstance(const NodeClass &nodeClass, void *instance) {
    if (nodeClass.cleanup) nodeClass.cleanup(instance);
}

HostError newTimeInstance(const NodeClass &nodeClass, void *instance, int frame, double time) {
    readParameters(nodeClass, instance, time);
    return nodeClass.newTime ? nodeClass.newTime(instance, frame, time) : nullptr;
}

int inputEvent(const NodeClass &nodeClass, void *instance, int event) {
    HostPanel *panel =
        nodeClass.record.panel != kNowhere ? fieldAt<HostPanel *>(instance, nodeClass.record.panel) : nullptr;
    if (panel) nodeClass.services->xpanf->refresh(panel);
    if (nodeClass.services->lwupdate && event == kInputSourceDestroyed)
        nodeClass.services->lwupdate(HOST_CLASS_NODE_HANDLER, instance);
    return 1;
}

void readParameters(const NodeClass &nodeClass, void *instance, double time) {
    for (const Parameter &row : nodeClass.parameters) {
        if (!isPersisted(row)) continue;
        double value[3] = {}; // large enough for every type
        nodeClass.services->vparmf->getValue(handle(instance, row), time, nullptr, value);
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

} // namespace velm::plugin
