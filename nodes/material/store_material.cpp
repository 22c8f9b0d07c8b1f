// Store Material: how do I give a network a name, so that other surfaces can use it too? Publishes what is connected to
// it, for Get Material nodes of any surface.
//
// The connections are shared, not their values: a Get Material node evaluates this node's inputs with its own sample.
// This node itself passes its inputs through to its outputs.
//
// Odd on purpose: a copy is not listed, so that no Get Material node can choose it, and the original remains the only
// store of its name; and loading restores the saved number of a listed store without raising the registry's counter and
// without notifying the Get Material nodes, which load their own numbers.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "share/registry.h"

#include <cstring>

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

#define AT(field) offsetof(StoreMaterial, field)
constexpr Parameter parameters[] = {
    hiddenInteger(AT(id)).notCopied(),
    text(AT(name), "Name", kStoreNameSize),
    plainInput("Color", kConnectColour, AT(colourInput)),
    plainInput("Scalar", kConnectScalar, AT(scalarInput)),
    plainInput("Vector", kConnectVector, AT(vectorInput)),
    plainInput("Integer", kConnectInteger, AT(integerInput)),
};
constexpr unsigned int kName = controlOf(parameters, AT(name));

void setName(StoreMaterial &self, const char *name) {
    std::strncpy(self.name, name, sizeof self.name - 1);
    self.name[sizeof self.name - 1] = '\0';
}

const char *prepare(void *instance, void *) {
    auto &self = *static_cast<StoreMaterial *>(instance);
    setName(self, services.nodeFunc->nodeName(self.node));
    self.id = kUnassignedStore;
    return nullptr;
}

void list(void *instance) { addStoreNodeForced(static_cast<StoreMaterial *>(instance)); }

void unlist(void *instance) {
    auto *self = static_cast<StoreMaterial *>(instance);
    removeStoreNode(self);
    releaseHolders(self);
}

HostError copied(void *to, void *) {
    removeStoreNode(static_cast<StoreMaterial *>(to));
    return nullptr;
}

// Takes the text from the control itself: the value that the panel passes may be an older one.
int setValue(void *instance, unsigned int id, void *) {
    if (id != kName) return kSetUnknown;
    auto &self = *static_cast<StoreMaterial *>(instance);
    if (const void *text = services.xpanf->getValue(self.panel, kName)) setName(self, static_cast<const char *>(text));
    return kSetDefault;
}

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Scalar", .type = kConnectScalar, .field = AT(scalarOutput)},
    {.name = "Vector", .type = kConnectVector, .field = AT(vectorOutput)},
    {.name = "Integer", .type = kConnectInteger, .field = AT(integerOutput)},
};

constexpr NodeClass nodeClass = {
    .name = "Store Material",
    .colour = nodeColor,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = {.size = sizeof(StoreMaterial), .node = AT(node), .panel = AT(panel)},
    .prepare = prepare,
    .created = list,
    .destroying = unlist,
    .copied = copied,
    .loaded = list,
    .setValue = setValue,
};

void StoreMaterial_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const StoreMaterial *>(instance);
    if (output == self.colourOutput)
        passThrough(services, self.colourInput, sample, value, Vec3{});
    else if (output == self.scalarOutput)
        passThrough(services, self.scalarInput, sample, value, 0.0);
    else if (output == self.vectorOutput)
        passThrough(services, self.vectorInput, sample, value, Vec3{});
    else
        passThrough(services, self.integerInput, sample, value, 0);
}

} // namespace

VELM_DEFINE_TAGS(StoreMaterial, nodeClass, "Velm's Nodes/Tools")
VELM_DEFINE_NODE(StoreMaterial, nodeClass)
VELM_DEFINE_PANEL(StoreMaterial, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
