// Get Material: how do I use the same network on several surfaces? Gives what is connected to a Store Material node,
// which may belong to another surface.
//
// The store's inputs are evaluated with this node's own sample, so that the shared network is shaded where this node is
// used. A store is identified by a number, which is looked up when rendering starts: a store may be renamed, and a new
// choice takes effect with the next render. Without a store the outputs are left unset, and the node that reads them
// uses its own value.
//
// Odd on purpose: a copy is removed from the registry's list, so that stores listed later leave its slot unchanged.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "share/registry.h"

namespace velm::plugin {
namespace {

NodeServices services;
constexpr int nodeColor[3] = {164, 50, 10};

int slotCount(void *) { return getStoreNodeCount(); }

#define AT(field) offsetof(GetMaterial, field)
constexpr Parameter parameters[] = {
    popup(AT(slot), "Slot").entries(slotCount, getStoreNodeName),
    hiddenInteger(AT(storeID)),
};

void list(void *instance) { addGetNodeForced(static_cast<GetMaterial *>(instance)); }

void leave(void *instance) {
    auto *self = static_cast<GetMaterial *>(instance);
    holdStore(self, nullptr);
    forgetGetNode(self);
}

HostError copied(void *to, void *) {
    removeGetNode(static_cast<GetMaterial *>(to));
    return nullptr;
}

HostError init(void *instance, int) {
    auto *self = static_cast<GetMaterial *>(instance);
    holdStore(self, getStoreNodeByID(self->storeID));
    return nullptr;
}

int setValue(void *instance, unsigned int id, void *value) {
    if (id != controlOf(parameters, AT(slot))) return kSetUnknown;
    auto &self = *static_cast<GetMaterial *>(instance);
    self.slot = *static_cast<const int *>(value);
    const StoreMaterial *store = self.slot < 1 ? nullptr : getStoreNode(self.slot - 1);
    self.storeID = store ? store->id : 0;
    return kSetDefault;
}

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Scalar", .type = kConnectScalar, .field = AT(scalarOutput)},
    {.name = "Vector", .type = kConnectVector, .field = AT(vectorOutput)},
    {.name = "Integer", .type = kConnectInteger, .field = AT(integerOutput)},
};

constexpr NodeClass nodeClass = {
    .name = "Get Material",
    .colour = nodeColor,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .record = {.size = sizeof(GetMaterial), .node = AT(node), .panel = AT(panel)},
    .created = list,
    .destroying = leave,
    .copied = copied,
    .init = init,
    .setValue = setValue,
};

void GetMaterial_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const GetMaterial *>(instance);
    const StoreMaterial *store = self.store;
    if (!store) return;
    if (output == self.colourOutput)
        passThrough(services, store->colourInput, sample, value, Vec3{});
    else if (output == self.scalarOutput)
        passThrough(services, store->scalarInput, sample, value, 0.0);
    else if (output == self.vectorOutput)
        passThrough(services, store->vectorInput, sample, value, Vec3{});
    else
        passThrough(services, store->integerInput, sample, value, 0);
}

} // namespace

VELM_DEFINE_TAGS(GetMaterial, nodeClass, "Velm's Nodes/Tools")
VELM_DEFINE_NODE(GetMaterial, nodeClass)
VELM_DEFINE_PANEL(GetMaterial, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
