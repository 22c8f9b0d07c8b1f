// The "LWXPanel" table.
#include "host/animation/vparm.h"
#include "host/load/dialogs.h"
#include "host/panel/draw.h"
#include "host/panel/panel.h"

namespace velm::host {

namespace {

constexpr int kPanelFuncsVersion = 1;

HostPanel *create(int kind, const void *controls) {
    if (kind != kPanelForm && kind != kPanelOwn) return nullptr;
    auto *panel = new HostPanel(kind);
    if (controls) panel->problem("it has a list of controls; controls are added by hints");
    return panel;
}

void destroy(HostPanel *panel) { delete panel; }

void describe(HostPanel *panel, const HostPanelValue *values, HostPanelGetter *get, HostPanelSetter *set) {
    if (panel) panel->describe(values, get, set);
}

void hint(HostPanel *panel, unsigned int, const HostHint *hints) {
    if (panel) panel->addHints(hints);
}

void *getData(HostPanel *panel, unsigned int id) { return panel ? panel->data(id) : nullptr; }

void setData(HostPanel *panel, unsigned int id, void *data) {
    if (panel) panel->setData(id, data);
}

void *getValue(HostPanel *panel, unsigned int id) { return panel ? panel->pendingValue(id) : nullptr; }

void setValue(HostPanel *panel, unsigned int id, void *value) {
    const PanelItem *control = panel ? panel->find(id) : nullptr;
    if (!control || !value) return;
    if (control->type->storage == Storage::animated) {
        auto *held = static_cast<HostVParm *>(panel->value(control->valueId));
        if (!held || vparmFuncs()->copy(held, static_cast<HostVParm *>(value))) return;
        value = held;
    }
    panel->store(*control, value);
}

void viewInstance(HostPanel *panel, void *instance) {
    if (panel) panel->viewInstance(instance);
}

void refresh(HostPanel *panel) {
    if (panel) panel->refresh();
}

int post(HostPanel *panel) {
    return panel && showDialog([&](Dialogs &dialogs) { return dialogs.postPanel(*panel); }) ? 1 : 0;
}

int open(HostPanel *panel) {
    return panel && showDialog([&](Dialogs &dialogs) { return dialogs.openPanel(*panel); }) ? 1 : 0;
}

} // namespace

const HostPanelFuncs *panelFuncs() {
    static const HostPanelFuncs funcs = {
        .version = kPanelFuncsVersion,
        .draw = drawFuncs(),
        .create = create,
        .destroy = destroy,
        .describe = describe,
        .hint = hint,
        .getData = getData,
        .setData = setData,
        .getValue = getValue,
        .setValue = setValue,
        .viewInstance = viewInstance,
        .refresh = refresh,
        .post = post,
        .open = open,
    };
    return &funcs;
}

} // namespace velm::host
