#include "host/panel/panel.h"

#include "host/base/error.h"
#include "host/guard/module_call.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <utility>

using namespace velm::host;

HostPanel::~HostPanel() {
    observers_.notify([&](PanelObserver &observer) { observer.panelDestroyed(*this); });
    try {
        if (destroyed_) callModule(owningServer, "panel destroyed", [&] { destroyed_(data(0)); });
    } catch (const ModuleError &error) {
        endByModuleError(error);
    }
}

void HostPanel::problem(const std::string &text) {
    if (problem_.empty()) problem_ = text;
}

PanelItem &HostPanel::itemFor(unsigned int id) {
    PanelItem &found = items_[id];
    found.id = id;
    return found;
}

const PanelItem *HostPanel::item(unsigned int id) const {
    const auto found = items_.find(id);
    return found == items_.end() ? nullptr : &found->second;
}

const PanelItem *HostPanel::find(unsigned int controlId) const {
    const PanelItem *found = item(controlId);
    return found && found->kind == ItemKind::control ? found : nullptr;
}

const ValueRow *HostPanel::row(unsigned int valueId) const {
    const auto found = rows_.find(valueId);
    return found == rows_.end() ? nullptr : &found->second;
}

void *HostPanel::data(unsigned int id) const {
    const auto found = data_.find(id);
    return found == data_.end() ? nullptr : found->second;
}

std::string HostPanel::label(const PanelItem &labelled) const {
    if (!labelled.label.empty() || labelled.kind != ItemKind::control) return labelled.label;
    const ValueRow *value = row(labelled.valueId);
    return value ? value->label : "";
}

std::string HostPanel::uniqueLabel(const PanelItem &control) const {
    const std::string text = label(control);
    int number = 0;
    for (const unsigned int id : order_) {
        const PanelItem &each = items_.at(id);
        if (label(each) == text) ++number;
        if (id == control.id) break;
    }
    return text.empty() || number < 2 ? text : fmt::format("{} {}", text, number);
}

std::vector<std::string> HostPanel::entries(const PanelItem &control) const {
    if (!control.popupCount || !control.popupName) return control.entries;
    std::vector<std::string> all;
    const int count = entryCount(control);
    for (int i = 0; i < count; ++i) {
        all.push_back(
            callModule(owningServer, "panel popup name", [&] { return moduleText(control.popupName(instance_, i)); }));
    }
    return all;
}

std::optional<int> HostPanel::chosenEntry(const PanelItem &control) {
    const std::optional<int> held = integerValue(control.valueId);
    if (!held) return {};
    if (control.kind == ItemKind::control && control.type->kind == ControlKind::transform) {
        const auto found = std::find(control.transform.begin(), control.transform.end(), *held);
        return found == control.transform.end() ? -1 : static_cast<int>(found - control.transform.begin());
    }
    return *held >= 0 && *held < entryCount(control) ? *held : -1;
}

int HostPanel::entryCount(const PanelItem &control) const {
    if (control.popupCount)
        return callModule(owningServer, "panel popup count", [&] { return control.popupCount(instance_); });
    return static_cast<int>(control.entries.size());
}

// ---- Values ------------------------------------------------------------------------------------------------------

void *HostPanel::ownValue(unsigned int valueId) {
    const ValueRow *described = row(valueId);
    if (!described) return nullptr;
    OwnValue &held = own_[valueId];
    switch (described->storage) {
    case Storage::integer: return &held.integer;
    case Storage::real: return held.real;
    case Storage::text: return held.text.data();
    default: return nullptr;
    }
}

void HostPanel::storeOwn(const PanelItem &control, const void *newValue) {
    OwnValue &held = own_[control.valueId];
    switch (control.type->storage) {
    case Storage::integer: held.integer = *static_cast<const int *>(newValue); break;
    case Storage::real: std::copy_n(static_cast<const double *>(newValue), control.type->components, held.real); break;
    case Storage::text: held.text = static_cast<const char *>(newValue); break;
    default: break;
    }
}

void *HostPanel::value(unsigned int valueId) {
    if (kind == kPanelOwn) return ownValue(valueId);
    if (!get_ || !instance_ || valueId == 0) return nullptr;
    return callModule(owningServer, "panel getter", [&] { return get_(instance_, valueId); });
}

bool HostPanel::isAvailable(const PanelItem &control) {
    return control.type->storage == Storage::none || value(control.valueId);
}

std::optional<int> HostPanel::integerValue(unsigned int valueId) {
    const ValueRow *described = row(valueId);
    const void *held = value(valueId);
    if (!described || described->storage != Storage::integer || !held) return {};
    return *static_cast<const int *>(held);
}

void *HostPanel::pendingValue(unsigned int controlId) {
    const PanelItem *control = find(controlId);
    if (!control) return nullptr;
    return pending_.value && pending_.controlId == controlId ? pending_.value : value(control->valueId);
}

bool HostPanel::store(const PanelItem &control, void *newValue) {
    if (control.type->storage == Storage::none || !newValue || !isAvailable(control)) return false;
    if (control.type->storage == Storage::text && std::strlen(static_cast<const char *>(newValue)) > kLongestText)
        return false;
    if (kind == kPanelOwn) {
        storeOwn(control, newValue);
        return true;
    }
    if (!set_) return false;
    const Pending before = std::exchange(pending_, {.controlId = control.id, .value = newValue});
    const int result =
        callModule(owningServer, "panel setter", [&] { return set_(instance_, control.valueId, newValue); });
    pending_ = before;
    tellObservers(result);
    return result != kSetUnknown;
}

bool HostPanel::edit(const PanelItem &control, void *newValue) {
    if (!store(control, newValue)) return false;
    notify(control, kEventSet);
    return true;
}

int HostPanel::notify(const PanelItem &control, int event) {
    int result = 0;
    if (change_)
        result =
            callModule(owningServer, "panel change", [&] { return change_(this, control.id, control.valueId, event); });
    tellObservers(result);
    return result;
}

void HostPanel::refresh() {
    observers_.notify([&](PanelObserver &observer) { observer.redraw(*this); });
}

void HostPanel::tellObservers(int result) {
    if (result == kSetRedraw) refresh();
    if (result == kSetRebuild) observers_.notify([&](PanelObserver &observer) { observer.rebuild(*this); });
}

void HostPanel::press(const PanelItem &control) {
    if (control.button)
        callModule(owningServer, "panel button", [&] { control.button(this, static_cast<int>(control.id)); });
}

// ---- Rules -------------------------------------------------------------------------------------------------------

// The length of a map over the value: the number of entries of the value's control; 0 when it is unknown.
int HostPanel::mapLength(unsigned int valueId) const {
    for (const unsigned int id : order_) {
        const PanelItem &control = items_.at(id);
        if (control.valueId != valueId) continue;
        switch (control.type->kind) {
        case ControlKind::choice:
        case ControlKind::transform: return entryCount(control);
        case ControlKind::flag: return 2;
        case ControlKind::integer: return control.maximum ? *control.maximum + 1 : 0;
        default: break;
        }
    }
    return 0;
}

std::set<unsigned int> HostPanel::around(unsigned int id) const {
    std::set<unsigned int> all;
    std::vector<unsigned int> inner = {id};
    while (!inner.empty()) {
        const unsigned int member = inner.back();
        inner.pop_back();
        for (const unsigned int container : containerOrder_) {
            const std::vector<unsigned int> &members = items_.at(container).members;
            const bool holds = std::find(members.begin(), members.end(), member) != members.end();
            if (holds && all.insert(container).second) inner.push_back(container);
        }
    }
    return all;
}

std::vector<const EnableRule *> HostPanel::rulesFor(const PanelItem &control) const {
    const std::set<unsigned int> containers = around(control.id);
    std::vector<const EnableRule *> all;
    for (const EnableRule &rule : rules_) {
        const bool meant = std::any_of(rule.ids.begin(), rule.ids.end(),
                                       [&](unsigned int id) { return id == control.id || containers.count(id) != 0; });
        if (meant) all.push_back(&rule);
    }
    return all;
}

bool HostPanel::isEnabled(const PanelItem &control, std::string *message) {
    for (const EnableRule *rule : rulesFor(control)) {
        const std::optional<int> driving = integerValue(rule->valueId);
        if (!driving) continue;
        const bool inMap = rule->map && *driving >= 0 && *driving < mapLength(rule->valueId);
        const bool enabled = rule->map ? inMap && rule->map[*driving] != 0 : *driving != 0;
        if (enabled) continue;
        if (message) *message = rule->message;
        return false;
    }
    return true;
}

std::optional<int> HostPanel::shownMember(const PanelItem &stack) {
    const std::optional<int> driving = integerValue(stack.valueId);
    if (!driving) return {};
    return shownFor(stack, *driving);
}

int HostPanel::shownFor(const PanelItem &stack, int driving) const {
    int index = driving;
    if (stack.map) index = driving >= 0 && driving < mapLength(stack.valueId) ? stack.map[driving] : -1;
    return index >= 0 && index < static_cast<int>(stack.members.size()) ? index : -1;
}
