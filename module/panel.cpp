#include "module/panel.h"

namespace velm::plugin {
namespace {

constexpr size_t kNoRow = static_cast<size_t>(-1);

// The index of the row whose control has an identifier.
size_t rowOf(const NodeClass &nodeClass, unsigned int id) {
    const auto parameters = nodeClass.parameters;
    for (size_t i = 0; i < parameters.size(); ++i)
        if (parameters[i].control && controlId(parameters, i) == id) return i;
    return kNoRow;
}

bool isConnected(const NodeClass &nodeClass, void *instance, size_t row) {
    if (nodeClass.parameters[row].input == 0) return false;
    return nodeClass.services->nodeInputFunc->isConnected(fieldAt<HostInput *>(instance, inputOffset(nodeClass, row)));
}

} // namespace

int activateInterface(const NodeClass &nodeClass, HostPanel *(*getPanel)(void *instance), int version,
                      HostLookup *lookup, void *local) {
    if (version != kNodeInterfaceVersion) return kActivateBadVersion;
    NodeServices &services = *nodeClass.services;
    services.lwupdate = reinterpret_cast<HostInstanceUpdate *>(lookup(HOST_INSTANCE_UPDATE, kUseTransient));
    services.xpanf = static_cast<const HostPanelFuncs *>(lookup(HOST_PANEL_FUNCS, kUseTransient));
    if (!services.lwupdate || !services.xpanf) return kActivateBadGlobal;

    auto *interface = static_cast<HostNodeInterface *>(local);
    interface->panel = getPanel(interface->instance);
    interface->options = nullptr;
    interface->command = nullptr;
    return kActivateOk;
}

HostPanel *getPanel(const NodeClass &nodeClass, const PanelTables &tables, void *instance) {
    if (!instance) return nullptr;
    HostPanel *&panel = fieldAt<HostPanel *>(instance, nodeClass.record.panel);
    if (panel) return panel;
    const HostPanelFuncs &xpanf = *nodeClass.services->xpanf;
    panel = xpanf.create(kPanelForm, nullptr);
    if (!panel) return nullptr;
    xpanf.hint(panel, 0, tables.hints); // the host wants the hints before the description
    xpanf.describe(panel, tables.values, tables.get, tables.set);
    xpanf.viewInstance(panel, instance);
    xpanf.setData(panel, 0, instance);
    return panel;
}

void *getPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id) {
    const size_t index = rowOf(nodeClass, id);
    if (index == kNoRow || isConnected(nodeClass, instance, index)) return nullptr;
    const Parameter &row = nodeClass.parameters[index];
    switch (row.holds) {
    case Holds::integer:
    case Holds::text: return &fieldAt<char>(instance, row.field);
    case Holds::scalar: return fieldAt<ScalarParameter>(instance, row.field).parm;
    case Holds::vec3: return fieldAt<Vec3Parameter>(instance, row.field).parm;
    case Holds::bareVec3:
    case Holds::nothing: break;
    }
    return nullptr;
}

int setPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id, void *value) {
    if (const int handled = nodeClass.setValue ? nodeClass.setValue(instance, id, value) : kSetUnknown) return handled;
    const size_t index = rowOf(nodeClass, id);
    if (index == kNoRow) return kSetUnknown;
    const Parameter &row = nodeClass.parameters[index];
    if (row.holds == Holds::nothing) return kSetUnknown;
    if (row.holds == Holds::integer) fieldAt<int>(instance, row.field) = *static_cast<const int *>(value);
    return kSetDefault; // the host has already changed an animated parameter
}

int panelChanged(const NodeClass &nodeClass, HostPanel *panel, unsigned int control, int event) {
    void *instance = nodeClass.services->xpanf->getData(panel, 0);
    if (event == kEventChanging)
        nodeClass.services->nodeFunc->updatePreview(fieldAt<HostNode *>(instance, nodeClass.record.node));
    if (event == kEventSet) nodeClass.services->lwupdate(HOST_CLASS_NODE_HANDLER, instance);
    return nodeClass.changed ? nodeClass.changed(instance, panel, control, event) : 0;
}

} // namespace velm::plugin
