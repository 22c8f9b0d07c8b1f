#include "module/panel.h"

namespace velm::plugin {
namespace {

const Parameter *rowOf(const NodeClass &nodeClass, unsigned int id) {
    if (id == 0) return nullptr;
    for (const Parameter &row : nodeClass.parameters)
        if (row.id == id) return &row;
    return nullptr;
}

// What is fed by a connection cannot be edited: its control shows nothing.
bool isConnected(const NodeClass &nodeClass, void *instance, const Parameter &row) {
    return row.input != 0 &&
           nodeClass.services->nodeInputFunc->isConnected(fieldAt<HostInput *>(instance, row.inputField));
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
    HostPanel *&panel = fieldAt<HostPanel *>(instance, nodeClass.panel);
    if (panel) return panel;
    const HostPanelFuncs &xpanf = *nodeClass.services->xpanf;
    panel = xpanf.create(kPanelForm, nullptr);
    if (!panel) return nullptr;
    xpanf.hint(panel, 0, tables.hints); // hints before the description: the host reads them in this order
    xpanf.describe(panel, tables.values, tables.get, tables.set);
    xpanf.viewInstance(panel, instance);
    xpanf.setData(panel, 0, instance);
    return panel;
}

void *getPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id) {
    const Parameter *row = rowOf(nodeClass, id);
    if (!row || isConnected(nodeClass, instance, *row)) return nullptr;
    switch (row->holds) {
    case Holds::integer:
    case Holds::text: return &fieldAt<char>(instance, row->field);
    case Holds::scalar: return fieldAt<ScalarParameter>(instance, row->field).parm;
    case Holds::vec3: return fieldAt<Vec3Parameter>(instance, row->field).parm;
    case Holds::bareVec3:
    case Holds::nothing: break;
    }
    return nullptr;
}

int setPanelValue(const NodeClass &nodeClass, void *instance, unsigned int id, void *value) {
    if (const int handled = nodeClass.setValue ? nodeClass.setValue(instance, id, value) : kSetUnknown) return handled;
    const Parameter *row = rowOf(nodeClass, id);
    if (!row || row->holds == Holds::nothing) return kSetUnknown;
    if (row->holds == Holds::integer) fieldAt<int>(instance, row->field) = *static_cast<const int *>(value);
    return kSetDefault; // an animated parameter has been changed by the host already
}

int panelChanged(const NodeClass &nodeClass, HostPanel *panel, unsigned int control, int event) {
    void *instance = nodeClass.services->xpanf->getData(panel, 0);
    if (event == kEventChanging)
        nodeClass.services->nodeFunc->updatePreview(fieldAt<HostNode *>(instance, nodeClass.node));
    if (event == kEventSet) nodeClass.services->lwupdate(HOST_CLASS_NODE_HANDLER, instance);
    return nodeClass.changed ? nodeClass.changed(instance, panel, control, event) : 0;
}

} // namespace velm::plugin
