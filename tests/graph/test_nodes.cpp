#include "tests/graph/test_nodes.h"

#include "host/services/services.h"

namespace velm::host::test {

namespace {

struct Port {
    int type;
    const char *name;
};
constexpr Port kPorts[] = {{kConnectColour, "Color"},      {kConnectScalar, "Scalar"},
                           {kConnectVector, "Vector"},     {kConnectInteger, "Integer"},
                           {kConnectFunction, "Function"}, {kConnectMaterial, "Material"}};
constexpr HostBlockId kNested{0x4e455354, "Nested"};

const char *nextFailure = nullptr;

TestNode &self(void *instance) { return *static_cast<TestNode *>(instance); }
TestGroup &group(void *instance) { return *static_cast<TestGroup *>(instance); }

void note(const std::string &what, HostNode *node) { journal().push_back(what + " " + nodeFuncs()->nodeName(node)); }

int event(void *instance, HostInput *input, int what, int type) {
    static constexpr const char *kWords[] = {"connected", "disconnected", "orphaned"};
    journal().push_back("event " + self(instance).node->name + "." + input->name + " " + kWords[what] + " " +
                        std::to_string(type));
    return 1;
}

void *create(void *, void *node, const char **error) {
    if (nextFailure) {
        *error = std::exchange(nextFailure, nullptr);
        return nullptr;
    }
    auto *instance = new TestNode;
    instance->node = static_cast<HostNode *>(node);
    for (const Port &port : kPorts) {
        instance->inputs[port.type] = nodeInputFuncs()->create(instance->node, port.type, port.name, event);
        instance->outputs[port.type] = nodeOutputFuncs()->create(instance->node, port.type, port.name);
    }
    note("create", instance->node);
    return instance;
}

void destroy(void *instance) {
    note("destroy", self(instance).node);
    delete &self(instance);
}

HostError copy(void *to, void *from) {
    self(to).scalar = self(from).scalar;
    self(to).step = self(from).step;
    return nullptr;
}

HostError save(void *instance, const HostSaveState *state) {
    const double values[] = {self(instance).scalar, self(instance).step};
    state->writeDP(state->data, values, 2);
    return nullptr;
}

HostError load(void *instance, const HostLoadState *state) {
    double values[2] = {};
    if (state->readDP(state->data, values, 2) != 2) return "two numbers are missing";
    self(instance).scalar = values[0];
    self(instance).step = values[1];
    return nullptr;
}

HostError init(void *instance, int mode) {
    note("init " + std::to_string(mode), self(instance).node);
    return self(instance).initError;
}

void cleanup(void *instance) { note("cleanup", self(instance).node); }

HostError newTime(void *instance, int frame, double) {
    note("time " + std::to_string(frame), self(instance).node);
    return self(instance).newTimeError;
}

void evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    TestNode &node = self(instance);
    lastAsked() = {nodeOutputFuncs()->getValue(value), nodeOutputFuncs()->askingType(value)};
    if (node.silent) return;
    const auto bring = [&](int type, void *held) {
        HostInput *input = type == kConnectScalar && node.elsewhere ? node.elsewhere : node.inputs[type];
        nodeInputFuncs()->evaluate(input, sample, held);
    };
    if (output == node.outputs[kConnectScalar]) {
        double held = node.scalar;
        bring(kConnectScalar, &held);
        held += node.step;
        nodeOutputFuncs()->setValue(value, &held);
    } else if (output == node.outputs[kConnectInteger]) {
        int held = node.integer;
        bring(kConnectInteger, &held);
        held += static_cast<int>(node.step);
        nodeOutputFuncs()->setValue(value, &held);
    } else if (output == node.outputs[kConnectFunction]) {
        const double result = 2 * *static_cast<double *>(nodeOutputFuncs()->getValue(value)) + node.step;
        nodeOutputFuncs()->setValue(value, &result);
    } else if (output == node.outputs[kConnectMaterial]) {
        nodeOutputFuncs()->setValue(value, &node.material);
    } else {
        nodeOutputFuncs()->setValue(value, output == node.outputs[kConnectColour] ? node.colour : node.vector);
    }
}

void *createGroup(void *, void *node, const char **error) {
    auto *instance = new TestGroup;
    instance->node = static_cast<HostNode *>(node);
    instance->network = networkOf(nodeEditorFuncs()->create("Inside", "Inside", nullptr, instance));
    if (!instance->network) {
        *error = "no network";
        delete instance;
        return nullptr;
    }
    nodeEditorFuncs()->setChannelGroup(instance->network, nodeFuncs()->channelGroup(instance->node));
    instance->root = nodeEditorFuncs()->addRootInput(instance->network, kConnectScalar, "Scalar", nullptr);
    instance->output = nodeOutputFuncs()->create(instance->node, kConnectScalar, "Scalar");
    return instance;
}

void destroyGroup(void *instance) {
    nodeEditorFuncs()->destroy(group(instance).network);
    delete &group(instance);
}

HostError copyGroup(void *to, void *from) { return nodeEditorFuncs()->copy(group(to).network, group(from).network); }

HostError saveGroup(void *instance, const HostSaveState *state) {
    state->beginBlock(state->data, &kNested, 0);
    const HostError error = nodeEditorFuncs()->save(group(instance).network, state);
    if (!error) state->endBlock(state->data);
    return error;
}

HostError loadGroup(void *instance, const HostLoadState *state) {
    static constexpr HostBlockId kTable[] = {kNested, {0, nullptr}};
    while (state->findBlock(state->data, kTable)) {
        if (const HostError error = nodeEditorFuncs()->load(group(instance).network, state)) return error;
        state->endBlock(state->data);
    }
    return nullptr;
}

HostError passedOn(void *instance, HostError error) { return group(instance).quiet ? nullptr : error; }

HostError initGroup(void *instance, int mode) {
    return passedOn(instance, nodeEditorFuncs()->init(group(instance).network, mode));
}
void cleanupGroup(void *instance) { nodeEditorFuncs()->cleanup(group(instance).network); }
HostError newTimeGroup(void *instance, int frame, double time) {
    return passedOn(instance, nodeEditorFuncs()->newTime(group(instance).network, frame, time));
}

void evaluateGroup(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    double held = 0;
    nodeInputFuncs()->evaluate(group(instance).root, sample, &held);
    nodeOutputFuncs()->setValue(value, &held);
}

int activateNode(int, HostLookup *, void *local, void *) {
    auto *handler = static_cast<HostNodeHandler *>(local);
    *handler->instance = {nullptr, create, destroy, copy, load, save, nullptr};
    *handler->render = {init, cleanup, newTime};
    handler->evaluate = evaluate;
    return kActivateOk;
}

int activateGroup(int, HostLookup *, void *local, void *) {
    auto *handler = static_cast<HostNodeHandler *>(local);
    *handler->instance = {nullptr, createGroup, destroyGroup, copyGroup, loadGroup, saveGroup, nullptr};
    *handler->render = {initGroup, cleanupGroup, newTimeGroup};
    handler->evaluate = evaluateGroup;
    return kActivateOk;
}

constexpr HostTag kTags[] = {{"Tester", kTagUserName}, {"Tests", kTagMenu}, {nullptr, 0}};
constexpr HostServer kServers[] = {{HOST_CLASS_NODE_HANDLER, "Test Node", activateNode, kTags},
                                   {HOST_CLASS_NODE_HANDLER, "Test Group", activateGroup, nullptr},
                                   {nullptr, nullptr, nullptr, nullptr}};

} // namespace

std::vector<std::string> &journal() {
    static std::vector<std::string> lines;
    return lines;
}

LastAsked &lastAsked() {
    thread_local LastAsked asked;
    return asked;
}

TestNode &testNode(HostNode &node) { return self(node.instance); }
TestGroup &testGroup(HostNode &node) { return group(node.instance); }

void failNextCreate(const char *message) { nextFailure = message; }

void GraphTest::SetUp() {
    serverList().add(kServers, "tests");
    journal().clear();
}

void GraphTest::TearDown() { serverList().remove("tests"); }

double GraphTest::scalarOf(HostNode &node, const char *input) {
    ShadingSample any{};
    double value = -1;
    evaluateInput(node.findInput(input), &any, &value);
    return value;
}

void addRootInputs(Network &network) {
    for (const Port &port : kPorts) nodeEditorFuncs()->addRootInput(&network, port.type, port.name, nullptr);
}

} // namespace velm::host::test
