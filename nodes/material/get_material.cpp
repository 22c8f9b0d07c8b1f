// Get Material: reuses the network that feeds a Store Material node, perhaps of another surface.
//
// The store's inputs are evaluated with this node's own sample, so that the shared network is shaded where the get is
// used. The link is the store's number, looked up when rendering starts: a store may be renamed, and a new choice takes
// effect with the next render. Without a store the outputs are left unset, and what asks keeps its own value.
//
// Odd on purpose: a copy is taken off the registry's list, so that stores that come later leave its slot alone.
#include "module/rows.h"
#include "module/servers.h"
#include "share/registry.h"

namespace velm::plugin {

static NodeServices services;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

enum Control : unsigned int { kSlot = kFirstControl };

int slotCount(void *) { return getStoreNodeCount(); }

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
    if (id != kSlot) return kSetUnknown;
    auto &self = *static_cast<GetMaterial *>(instance);
    self.slot = *static_cast<const int *>(value);
    const StoreMaterial *store = self.slot < 1 ? nullptr : getStoreNode(self.slot - 1);
    self.storeID = store ? store->id : 0;
    return kSetDefault;
}

#define AT(field) offsetof(GetMaterial, field)
constexpr Parameter parameters[] = {
    popup(kSlot, "Slot").at(AT(slot)).entries(slotCount, getStoreNodeName),
    hiddenInteger(AT(storeID)),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Scalar", .type = kConnectScalar, .field = AT(scalarOutput)},
    {.name = "Vector", .type = kConnectVector, .field = AT(vectorOutput)},
    {.name = "Integer", .type = kConnectInteger, .field = AT(integerOutput)},
};

constexpr NodeClass nodeClass = {
    .name = "Get Material",
    .size = sizeof(GetMaterial),
    .colour = nodeColor,
    .services = &services,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .created = list,
    .destroying = leave,
    .copied = copied,
    .init = init,
    .setValue = setValue,
};
#undef AT

} // namespace

static void GetMaterial_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
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

VELM_DEFINE_TAGS(GetMaterial, nodeClass, "Velm's Nodes/Tools")
VELM_DEFINE_NODE(GetMaterial, nodeClass)
VELM_DEFINE_PANEL(GetMaterial, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin
