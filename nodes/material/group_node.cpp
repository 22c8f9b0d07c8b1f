// Group Node: how do I put a whole network into one node? Each instance owns a nested node editor of the host. The
// network in it is connected to the inputs of its root node, and the outputs of the Group Node have the same names and
// give the values of these inputs.
//
// The nested network is initialised, stepped in time, cleaned up, copied and saved with the node, and destroyed with
// it. An input that is not connected inside gives a light grey, 1, a zero vector, 1, or a light grey material.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"

namespace velm::plugin {
namespace {

NodeServices services;
const HostNodeUtilityFuncs *nodeutilf;
constexpr int nodeColor[3] = {164, 50, 10};

struct GroupNode {
    HostNodeEditor *editor;
    HostNode *root;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *colourInput, *scalarInput, *vectorInput, *integerInput, *materialInput; // of the nested root
    HostOutput *colourOutput, *scalarOutput, *vectorOutput, *integerOutput, *materialOutput;
};

constexpr char kTitle[] = "Group Node";
constexpr double kGrey = 0.78431;
constexpr HostMaterial kGreyMaterial = {
    .diffuse = {kGrey, kGrey, kGrey}, .specular = {}, .reflection = {}, .refraction = {}, .transparency = 0};
constexpr HostBlockId idroot[] = {{.id = 0x4e4f4445, .token = "NodeEditor"}, {.id = 0, .token = nullptr}}; // "NODE"

// ---- What the nested editor calls ----

void GroupNode_rootNodePreview(HostNodeEditor *editor, ShadingSample *sample, double colour[3]) {
    const auto &self = *static_cast<const GroupNode *>(services.nodeEditorFunc->userData(editor));
    for (int i = 0; i < 3; ++i) colour[i] = kGrey;
    services.nodeInputFunc->evaluate(self.colourInput, sample, colour);
}

// The bounds are a box about the origin, of the size that the host gives for the outer node.
void GroupNode_Autosize(HostNodeEditor *, void *userData, double bounds[3][2]) {
    if (!userData || !nodeutilf) return;
    double scale[3] = {}, position[3] = {};
    nodeutilf->autosize(static_cast<const GroupNode *>(userData)->node, scale, position);
    for (int i = 0; i < 3; ++i) {
        bounds[i][0] = scale[i] * -0.5;
        bounds[i][1] = scale[i] * 0.5;
    }
}

void *GroupNode_EventFunc(HostNodeEditor *editor) { return services.nodeEditorFunc->userData(editor); }

// ---- Life ----

const char *prepare(void *instance, void *) {
    auto &self = *static_cast<GroupNode *>(instance);
    const HostNodeEditorFuncs &editors = *services.nodeEditorFunc;
    HostRootDescription root = {};
    root.preview = GroupNode_rootNodePreview;
    self.editor = editors.create(kTitle, kTitle, &root, instance);
    if (!self.editor) return "Node editor creation failed!";

    HostChannelGroup *parent = services.nodeFunc->channelGroup(self.node);
    self.group = services.envf->createGroup(parent, kTitle);
    editors.setChannelGroup(self.editor, parent);
    self.root = editors.rootNode(self.editor);
    services.nodeFunc->setColour(self.root, nodeColor);
    editors.setEvent(self.editor, GroupNode_EventFunc);
    editors.setAutosize(self.editor, GroupNode_Autosize);
    self.colourInput = editors.addRootInput(self.editor, kConnectColour, "Color", nullptr);
    self.scalarInput = editors.addRootInput(self.editor, kConnectScalar, "Scalar", nullptr);
    self.vectorInput = editors.addRootInput(self.editor, kConnectVector, "Vector", nullptr);
    self.integerInput = editors.addRootInput(self.editor, kConnectInteger, "Integer", nullptr);
    self.materialInput = editors.addRootInput(self.editor, kConnectMaterial, "Material", nullptr);
    return nullptr;
}

HostNodeEditor *editorOf(void *instance) { return static_cast<const GroupNode *>(instance)->editor; }

void destroying(void *instance) {
    if (HostNodeEditor *editor = editorOf(instance)) services.nodeEditorFunc->destroy(editor);
}

// Copying, starting and stepping always succeed for the node itself. The host reports the errors of the nodes inside.
HostError copied(void *to, void *from) {
    services.nodeEditorFunc->copy(editorOf(to), editorOf(from));
    return nullptr;
}

HostError init(void *instance, int mode) {
    services.nodeEditorFunc->init(editorOf(instance), mode);
    return nullptr;
}

void cleanup(void *instance) { services.nodeEditorFunc->cleanup(editorOf(instance)); }

HostError newTime(void *instance, int frame, double time) {
    services.nodeEditorFunc->newTime(editorOf(instance), frame, time);
    return nullptr;
}

HostError saveNetwork(void *instance, const HostSaveState *state) {
    state->beginBlock(state->data, idroot, 0);
    if (HostError error = services.nodeEditorFunc->save(editorOf(instance), state)) return error;
    state->endBlock(state->data);
    return nullptr;
}

HostError loadNetwork(void *instance, const HostLoadState *state) {
    while (state->findBlock(state->data, idroot)) {
        if (HostError error = services.nodeEditorFunc->load(editorOf(instance), state)) return error;
        state->endBlock(state->data);
    }
    return nullptr;
}

// ---- Panel ----

void buttonCallback(HostPanel *panel, int) {
    const auto &self = *static_cast<const GroupNode *>(services.xpanf->getData(panel, 0));
    services.nodeEditorFunc->rename(services.nodeFunc->nodeName(self.node), self.editor);
    services.nodeEditorFunc->openWindow(self.editor);
}

constexpr Parameter parameters[] = {button("Edit Nodes", buttonCallback)};

#define AT(field) offsetof(GroupNode, field)
constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Scalar", .type = kConnectScalar, .field = AT(scalarOutput)},
    {.name = "Vector", .type = kConnectVector, .field = AT(vectorOutput)},
    {.name = "Integer", .type = kConnectInteger, .field = AT(integerOutput)},
    {.name = "Material", .type = kConnectMaterial, .field = AT(materialOutput)},
};

constexpr FurtherService furtherServices[] = {{.name = HOST_NODE_UTILITY_FUNCS, .store = storeIn<nodeutilf>}};

constexpr NodeClass nodeClass = {
    .name = kTitle,
    .colour = nodeColor,
    .services = &services,
    .furtherServices = furtherServices,
    .parameters = parameters,
    .outputs = outputs,
    .record = {.size = sizeof(GroupNode), .node = AT(node), .panel = AT(panel)},
    .prepare = prepare,
    .destroying = destroying,
    .copied = copied,
    .saveMore = saveNetwork,
    .loadMore = loadNetwork,
    .init = init,
    .cleanup = cleanup,
    .newTime = newTime,
};

void GroupNode_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const GroupNode *>(instance);
    if (output == self.colourOutput)
        passThrough(services, self.colourInput, sample, value, Vec3{{kGrey, kGrey, kGrey}});
    else if (output == self.scalarOutput)
        passThrough(services, self.scalarInput, sample, value, 1.0);
    else if (output == self.vectorOutput)
        passThrough(services, self.vectorInput, sample, value, Vec3{});
    else if (output == self.integerOutput)
        passThrough(services, self.integerInput, sample, value, 1);
    else if (output == self.materialOutput)
        passThrough(services, self.materialInput, sample, value, kGreyMaterial);
}

} // namespace

VELM_DEFINE_TAGS(GroupNode, nodeClass, "Velm's Nodes/Tools")
VELM_DEFINE_NODE(GroupNode, nodeClass)
VELM_DEFINE_PANEL(GroupNode, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
