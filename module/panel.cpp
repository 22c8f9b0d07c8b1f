#include "module/panel.h"

namespace velm {
namespace {

const Parameter *rowOf(const NodeUnit &unit, unsigned int id) {
    if (id == 0) return nullptr;
    for (const Parameter &row : unit.parameters)
        if (row.id == id) return &row;
    return nullptr;
}

// What is fed by a connection cannot be edited: its control shows nothing.
bool isConnected(const NodeUnit &unit, void *instance, const Parameter &row) {
    return row.input != 0 && unit.services->nodeInputFunc->isConnected(fieldAt<HostInput *>(instance, row.inputField));
}

} // namespace

int activateInterface(const NodeUnit &unit, HostPanel *(*getPanel)(void *instance), int version, HostLookup *lookup,
                      void *local) {
    if (version != kNodeInterfaceVersion) return kActivateBadVersion;
    NodeServices &services = *unit.services;
    services.lwupdate = reinterpret_cast<HostInstanceUpdate *>(lookup(HOST_INSTANCE_UPDATE, kUseTransient));
    services.xpanf = static_cast<const HostPanelFuncs *>(lookup(HOST_PANEL_FUNCS, kUseTransient));
    if (!services.lwupdate || !services.xpanf) return kActivateBadGlobal;

    auto *interface = static_cast<HostNodeInterface *>(local);
    interface->panel = getPanel(interface->instance);
    interface->options = nullptr;
    interface->command = nullptr;
    return kActivateOk;
}

HostPanel *getPanel(const NodeUnit &unit, const PanelTables &tables, void *instance) {
    if (!instance) return nullptr;
    HostPanel *&panel = fieldAt<HostPanel *>(instance, unit.panel);
    if (panel) return panel;
    const HostPanelFuncs &xpanf = *unit.services->xpanf;
    panel = xpanf.create(kPanelForm, nullptr);
    if (!panel) return nullptr;
    xpanf.hint(panel, 0, tables.hints); // hints before the description: the host reads them in this order
    xpanf.describe(panel, tables.values, tables.get, tables.set);
    xpanf.viewInstance(panel, instance);
    xpanf.setData(panel, 0, instance);
    return panel;
}

void *getPanelValue(const NodeUnit &unit, void *instance, unsigned int id) {
    const Parameter *row = rowOf(unit, id);
    if (!row || isConnected(unit, instance, *row)) return nullptr;
    switch (row->holds) {
    case Holds::integer:
    case Holds::text: return &fieldAt<char>(instance, row->field);
    case Holds::scalar: return fieldAt<ScalarParameter>(instance, row->field).parm;
    case Holds::triple: return fieldAt<TripleParameter>(instance, row->field).parm;
    case Holds::bareTriple:
    case Holds::nothing: break;
    }
    return nullptr;
}

int setPanelValue(const NodeUnit &unit, void *instance, unsigned int id, void *value) {
    if (const int handled = unit.setValue ? unit.setValue(instance, id, value) : kSetUnknown) return handled;
    const Parameter *row = rowOf(unit, id);
    if (!row || row->holds == Holds::nothing) return kSetUnknown;
    if (row->holds == Holds::integer) fieldAt<int>(instance, row->field) = *static_cast<const int *>(value);
    return kSetDefault; // an animated parameter has been changed by the host already
}

int panelChanged(const NodeUnit &unit, HostPanel *panel, unsigned int control, int event) {
    void *instance = unit.services->xpanf->getData(panel, 0);
    if (event == kEventChanging) unit.services->nodeFunc->updatePreview(fieldAt<HostNode *>(instance, unit.node));
    if (event == kEventSet) unit.services->lwupdate(HOST_CLASS_NODE_HANDLER, instance);
    return unit.changed ? unit.changed(instance, panel, control, event) : 0;
}

} // namespace velm
