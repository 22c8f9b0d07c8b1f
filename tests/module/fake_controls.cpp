#include "tests/module/fake_controls.h"

#include "tests/module/hint_list.h"

namespace velm::plugin {
namespace {

FakeControls *currentControls = nullptr;

FakeHost &host() { return FakeHost::current(); }

const HostDrawFuncs kDrawFuncs = [] {
    HostDrawFuncs funcs{};
    funcs.rgbPixel = [](HostDrawArea *area, int red, int green, int blue, int x, int y) {
        area->pixels.push_back({.red = red, .green = green, .blue = blue, .x = x, .y = y});
    };
    funcs.rgbBox = [](HostDrawArea *area, int red, int green, int blue, int x, int y, int width, int height) {
        area->boxes.push_back({red, green, blue, x, y, width, height});
    };
    return funcs;
}();

void *controlValue(HostPanel *, unsigned int id) {
    host().note("getControl ", std::hex, id);
    const auto text = currentControls->texts.find(id);
    return text == currentControls->texts.end() ? nullptr : text->second.data();
}

void setControl(HostPanel *panel, unsigned int id, void *value) {
    host().note("setControl ", std::hex, id, " ", std::dec, *static_cast<int *>(value));
    if (currentControls->setReaches) panel->set(panel->viewed, id, value);
}

} // namespace

FakeControls::FakeControls() { currentControls = this; }
FakeControls::~FakeControls() { currentControls = nullptr; }

void *FakeControls::lookup(const char *service, int use) {
    void *found = FakeHost::lookup(service, use);
    if (!found || service != std::string(HOST_PANEL_FUNCS)) return found;
    static HostPanelFuncs funcs;
    funcs = *static_cast<HostPanelFuncs *>(found);
    funcs.draw = &kDrawFuncs;
    funcs.getValue = controlValue;
    funcs.setValue = setControl;
    return &funcs;
}

int FakeControls::choose(HostPanel *panel, unsigned int id, int value) {
    panel->set(panel->viewed, id, &value);
    return notify(panel, id, kEventSet);
}

int FakeControls::notify(HostPanel *panel, unsigned int id, int event) {
    host().takeLog();
    return hintsWith(kHintChangeNotify, panel->hints).at(0).arguments[0].change(panel, id, id, event);
}

} // namespace velm::plugin
