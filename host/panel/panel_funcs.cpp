// The "LWXPanel" table.

#include "host/animation/vparm.h"
#include "host/panel/draw.h"
#include "host/panel/panel.h"

namespace velm::host {

namespace {

constexpr int kPanelFuncsVersion = 1;

HostPanel *create(int kind, const void *controls) {
    if (kind != kPanelForm && kind != kPanelOwn) return nullptr;
    auto *panel = new HostPanel(kind);
    if (controls != nullptr) panel->problem("it has a list of controls; controls are added by hints");
    return panel;
}

void destroy(HostPanel *panel) { delete panel; }

void describe(HostPanel *panel, const HostPanelValue *values, HostPanelGetter *get, HostPanelSetter *set) {
    if (panel != nullptr) panel->describe(values, get, set);
}

void hint(HostPanel *panel, unsigned int, const HostHint *hints) {
    if (panel != nullptr) panel->addHints(hints);
}

void *getData(HostPanel *panel, unsigned int id) { return panel != nullptr ? panel->data(id) : nullptr; }

void setData(HostPanel *panel, unsigned int id, void *data) {
    if (panel != nullptr) panel->setData(id, data);
}

void *getValue(HostPanel *panel, unsigned int id) { return panel != nullptr ? panel->pendingValue(id) : nullptr; }

void setValue(HostPanel *panel, unsigned int id, void *value) {
    const PanelItem *control = panel != nullptr ? panel->find(id) : nullptr;
    if (control == nullptr || value == nullptr) return;
    if (control->type->storage == Storage::animated) {
        auto *held = static_cast<HostVParm *>(panel->value(control->valueId));
        if (held == nullptr || vparmFuncs()->copy(held, static_cast<HostVParm *>(value)) != nullptr) return;
        value = held;
    }
    panel->store(*control, value);
}

void viewInstance(HostPanel *panel, void *instance) {
    if (panel != nullptr) panel->viewInstance(instance);
}

void refresh(HostPanel *panel) {
    if (panel != nullptr) panel->refresh();
}

int noWindow(HostPanel *) { return 0; }

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
        .post = noWindow,
        .open = noWindow,
    };
    return &funcs;
}

} // namespace velm::host
