#include "host/graph/builtin/frame.h"

#include "host/graph/builtin/kinds.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace velm::host::builtin {

namespace {

Services fetched;

Instance &self(void *instance) { return *static_cast<Instance *>(instance); }

// Calls `act` with the index and the row of each parameter.
template <class Act>
void forEachParameter(const Definition &definition, Act act) {
    for (std::size_t i = 0; i < definition.parameters.size() && definition.parameters[i].label; ++i)
        act(i, definition.parameters[i]);
}

// The panel shows a parameter that a connection overrides as unavailable; a source that is destroyed changes the
// result.
int inputEvent(void *instance, HostInput *, int event, int) {
    if (self(instance).panel) fetched.panels->refresh(self(instance).panel);
    if (fetched.update && event == kInputSourceDestroyed) fetched.update(HOST_CLASS_NODE_HANDLER, instance);
    return 1;
}

void createParameter(Instance &instance, std::size_t index, const Parameter &parameter) {
    const KindFacts facts = factsOf(parameter.kind);
    instance.values[index] = parameter.initial;
    instance.integers[index] = static_cast<int>(parameter.initial[0]);
    if (parameter.texts)
        while (parameter.texts[instance.lastChoices[index] + 1]) ++instance.lastChoices[index];
    if (facts.parmType) {
        HostVParm *parm = fetched.parms->create(facts.parmType, -1);
        fetched.parms->setUp(parm, parameter.label, fetched.nodes->channelGroup(instance.node), nullptr, nullptr,
                             nullptr, nullptr);
        fetched.parms->setValue(parm, parameter.initial.data());
        instance.parms[index] = parm;
    }
    if (facts.inputType)
        instance.inputs[index] = fetched.inputs->create(instance.node, facts.inputType, parameter.label, inputEvent);
}

void *create(void *priv, void *node, const char **error) {
    auto *instance = new (std::nothrow) Instance;
    if (!instance) {
        *error = "there is no memory for it";
        return nullptr;
    }
    instance->definition = static_cast<const Definition *>(priv);
    instance->node = static_cast<HostNode *>(node);
    fetched.nodes->setColour(instance->node, instance->definition->colour.data());
    forEachParameter(*instance->definition,
                     [&](std::size_t i, const Parameter &parameter) { createParameter(*instance, i, parameter); });
    for (std::size_t i = 0; i < kMaxOutputs && instance->definition->outputs[i].name; ++i) {
        const Output &output = instance->definition->outputs[i];
        instance->outputs[i] = fetched.outputs->create(instance->node, output.type, output.name);
    }
    return instance;
}

void destroy(void *instance) {
    for (HostVParm *parm : self(instance).parms)
        if (parm) fetched.parms->destroy(parm);
    delete &self(instance);
}

HostError copy(void *to, void *from) {
    Instance &target = self(to);
    const Instance &source = self(from);
    target.integers = source.integers;
    target.image = source.image;
    target.text = source.text;
    for (std::size_t i = 0; i < kMaxParameters; ++i)
        if (source.parms[i])
            if (const HostError error = fetched.parms->copy(target.parms[i], source.parms[i])) return error;
    target.readParameters(source.time);
    return nullptr;
}

// Saves the parameters in the table's order: integers as I4, texts and references to images as the services write them.
HostError save(void *instance, const HostSaveState *state) {
    Instance &saved = self(instance);
    HostError error = nullptr;
    forEachParameter(*saved.definition, [&](std::size_t i, const Parameter &parameter) {
        if (error) return;
        if (parameter.kind == Kind::image)
            fetched.images->saveReference(state, saved.image);
        else if (parameter.kind == Kind::text)
            state->writeString(state->data, saved.text.data());
        else if (saved.parms[i])
            error = fetched.parms->save(saved.parms[i], state);
        else
            state->writeI4(state->data, &saved.integers[i], 1);
    });
    return error;
}

HostError load(void *instance, const HostLoadState *state) {
    Instance &loaded = self(instance);
    HostError error = nullptr;
    forEachParameter(*loaded.definition, [&](std::size_t i, const Parameter &parameter) {
        if (error) return;
        if (parameter.kind == Kind::image)
            loaded.image = fetched.images->loadReference(state);
        else if (parameter.kind == Kind::text)
            state->readString(state->data, loaded.text.data(), kTextSize);
        else if (loaded.parms[i])
            error = fetched.parms->load(loaded.parms[i], state);
        else if (state->readI4(state->data, &loaded.integers[i], 1) != 1)
            error = "a whole number is missing";
    });
    if (!error) loaded.readParameters(0);
    return error;
}

const char *describe(void *instance) { return self(instance).definition->name; }

// The image may have been removed from the list since it was chosen.
HostError init(void *instance, int) {
    HostImage *image = fetched.images->first();
    while (image && image != self(instance).image) image = fetched.images->next(image);
    self(instance).image = image;
    return nullptr;
}

HostError newTime(void *instance, int frame, double time) {
    Instance &node = self(instance);
    node.frame = frame;
    node.readParameters(time);
    return node.definition->newTime ? node.definition->newTime(node) : nullptr;
}

void evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const Instance &node = self(instance);
    const auto found = std::find(node.outputs.begin(), node.outputs.end(), output);
    if (found == node.outputs.end()) return;
    node.definition->evaluate(Evaluation(node, sample, value), static_cast<int>(found - node.outputs.begin()));
}

template <class T>
bool fetch(HostLookup *lookup, const char *name, const T *&service) {
    service = static_cast<const T *>(lookup(name, kUseTransient));
    return service;
}

} // namespace

const Services &services() { return fetched; }

void Instance::readParameters(double atTime) {
    time = atTime;
    for (std::size_t i = 0; i < kMaxParameters; ++i)
        if (parms[i]) fetched.parms->getValue(parms[i], atTime, nullptr, values[i].data());
}

int activateHandler(const Definition &definition, int version, HostLookup *lookup, void *local) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    if (!fetch(lookup, HOST_NODE_FUNCS, fetched.nodes) || !fetch(lookup, HOST_NODE_INPUT_FUNCS, fetched.inputs) ||
        !fetch(lookup, HOST_NODE_OUTPUT_FUNCS, fetched.outputs) ||
        !fetch(lookup, HOST_NODE_UTILITY_FUNCS, fetched.utility) || !fetch(lookup, HOST_VPARM_FUNCS, fetched.parms) ||
        !fetch(lookup, HOST_IMAGE_LIST, fetched.images) || !fetch(lookup, kVertexMapFuncs, fetched.vertexMaps) ||
        !fetch(lookup, kItemPlaceFuncs, fetched.places))
        return kActivateBadGlobal;
    auto *handler = static_cast<HostNodeHandler *>(local);
    // The host passes it to create, which only reads it.
    handler->instance->priv = const_cast<Definition *>(&definition);
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->instance->copy = copy;
    handler->instance->load = load;
    handler->instance->save = save;
    handler->instance->describe = describe;
    handler->render->init = init;
    handler->render->newTime = newTime;
    handler->evaluate = evaluate;
    return kActivateOk;
}

int activateInterface(int version, HostLookup *lookup, void *local, void *) {
    if (version != kNodeInterfaceVersion) return kActivateBadVersion;
    fetched.update = reinterpret_cast<HostInstanceUpdate *>(lookup(HOST_INSTANCE_UPDATE, kUseTransient));
    if (!fetched.update || !fetch(lookup, HOST_PANEL_FUNCS, fetched.panels)) return kActivateBadGlobal;
    auto *interface = static_cast<HostNodeInterface *>(local);
    interface->panel = panelOf(self(interface->instance));
    interface->options = nullptr;
    interface->command = nullptr;
    return kActivateOk;
}

double Evaluation::scalar(int parameter) const { return scalarAt(parameter, *sample_); }

double Evaluation::scalarAt(int parameter, ShadingSample &other) const {
    const auto index = static_cast<std::size_t>(parameter);
    double value = instance_.values[index][0];
    fetched.inputs->evaluate(instance_.inputs[index], &other, &value);
    return value;
}

bool Evaluation::isConnected(int parameter) const {
    return fetched.inputs->isConnected(instance_.inputs[static_cast<std::size_t>(parameter)]) != 0;
}

std::array<double, 3> Evaluation::triple(int parameter) const {
    const auto index = static_cast<std::size_t>(parameter);
    std::array<double, 3> value = instance_.values[index];
    fetched.inputs->evaluate(instance_.inputs[index], sample_, value.data());
    return value;
}

int Evaluation::integer(int parameter) const {
    const auto index = static_cast<std::size_t>(parameter);
    int value = instance_.integers[index];
    fetched.inputs->evaluate(instance_.inputs[index], sample_, &value);
    return value;
}

int Evaluation::choice(int parameter) const {
    return std::clamp(integer(parameter), 0, instance_.lastChoices[static_cast<std::size_t>(parameter)]);
}

bool Evaluation::uv(double &u, double &v) const { return uvAt(*sample_, u, v); }

bool Evaluation::uvAt(ShadingSample &other, double &u, double &v) const {
    u = v = 0;
    return fetched.utility->uvMapping(instance_.text.data(), &other, &u, &v) != 0;
}

std::array<double, 4> Evaluation::vertexColour() const {
    std::array<double, 4> colour{1, 1, 1, 1};
    fetched.vertexMaps->colour(instance_.text.data(), sample_, colour.data());
    return colour;
}

double Evaluation::vertexWeight() const {
    double weight = 0;
    fetched.vertexMaps->weight(instance_.text.data(), sample_, &weight);
    return weight;
}

void Evaluation::set(double result) const { fetched.outputs->setValue(value_, &result); }
void Evaluation::set(int result) const { fetched.outputs->setValue(value_, &result); }
void Evaluation::set(const std::array<double, 3> &result) const { set(result.data()); }
void Evaluation::set(const double result[3]) const { fetched.outputs->setValue(value_, result); }
double Evaluation::found() const { return *static_cast<double *>(fetched.outputs->getValue(value_)); }

} // namespace velm::host::builtin
