#include "host/panel/panel.h"

#include "host/guard/module_call.h"

#include <algorithm>
#include <cstring>
#include <utility>

using velm::host::callModule;

HostPanel::~HostPanel() {
    if (destroyed_ != nullptr) callModule(maker, "panel destroyed", [&] { destroyed_(data(0)); });
}

void HostPanel::problem(const std::string &text) {
    if (problem_.empty()) problem_ = text;
}

velm::host::PanelItem &HostPanel::itemFor(unsigned int id) {
    velm::host::PanelItem &found = items_[id];
    found.id = id;
    return found;
}

const velm::host::PanelItem *HostPanel::item(unsigned int id) const {
    const auto found = items_.find(id);
    return found == items_.end() ? nullptr : &found->second;
}

const velm::host::PanelItem *HostPanel::find(unsigned int controlId) const {
    const velm::host::PanelItem *found = item(controlId);
    return found != nullptr && found->kind == velm::host::ItemKind::control ? found : nullptr;
}

const velm::host::ValueRow *HostPanel::row(unsigned int valueId) const {
    const auto found = rows_.find(valueId);
    return found == rows_.end() ? nullptr : &found->second;
}

void *HostPanel::data(unsigned int id) const {
    const auto found = data_.find(id);
    return found == data_.end() ? nullptr : found->second;
}

std::string HostPanel::label(const velm::host::PanelItem &labelled) const {
    if (!labelled.label.empty() || labelled.kind != velm::host::ItemKind::control) return labelled.label;
    const velm::host::ValueRow *value = row(labelled.valueId);
    return value != nullptr ? value->label : "";
}

std::string HostPanel::uniqueLabel(const velm::host::PanelItem &control) const {
    const std::string text = label(control);
    int number = 0;
    for (const unsigned int id : order_) {
        const velm::host::PanelItem &each = items_.at(id);
        if (label(each) == text) ++number;
        if (id == control.id) break;
    }
    return text.empty() || number < 2 ? text : text + " " + std::to_string(number);
}

std::vector<std::string> HostPanel::entries(const velm::host::PanelItem &control) const {
    if (control.popupCount == nullptr || control.popupName == nullptr) return control.entries;
    std::vector<std::string> all;
    const int count = entryCount(control);
    for (int i = 0; i < count; ++i) {
        const char *name = callModule(maker, "panel popup name", [&] { return control.popupName(instance_, i); });
        all.emplace_back(name != nullptr ? name : "");
    }
    return all;
}

std::optional<int> HostPanel::chosenEntry(const velm::host::PanelItem &control) {
    const std::optional<int> held = wholeValue(control.valueId);
    if (!held) return {};
    if (control.kind == velm::host::ItemKind::control && control.type->kind == velm::host::ControlKind::transform) {
        const auto found = std::find(control.transform.begin(), control.transform.end(), *held);
        return found == control.transform.end() ? -1 : static_cast<int>(found - control.transform.begin());
    }
    return *held >= 0 && *held < entryCount(control) ? *held : -1;
}

int HostPanel::entryCount(const velm::host::PanelItem &control) const {
    if (control.popupCount != nullptr)
        return callModule(maker, "panel popup count", [&] { return control.popupCount(instance_); });
    return static_cast<int>(control.entries.size());
}

// ---- Values ----

void *HostPanel::ownValue(unsigned int valueId) {
    const velm::host::ValueRow *described = row(valueId);
    if (described == nullptr) return nullptr;
    velm::host::OwnValue &held = own_[valueId];
    switch (described->storage) {
    case velm::host::Storage::whole: return &held.whole;
    case velm::host::Storage::real: return held.real;
    case velm::host::Storage::text: return held.text.data();
    default: return nullptr;
    }
}

void HostPanel::storeOwn(const velm::host::PanelItem &control, const void *newValue) {
    velm::host::OwnValue &held = own_[control.valueId];
    switch (control.type->storage) {
    case velm::host::Storage::whole: held.whole = *static_cast<const int *>(newValue); break;
    case velm::host::Storage::real:
        std::copy_n(static_cast<const double *>(newValue), control.type->components, held.real);
        break;
    case velm::host::Storage::text: held.text = static_cast<const char *>(newValue); break;
    default: break;
    }
}

void *HostPanel::value(unsigned int valueId) {
    if (kind == kPanelOwn) return ownValue(valueId);
    if (get_ == nullptr || instance_ == nullptr || valueId == 0) return nullptr;
    return callModule(maker, "panel getter", [&] { return get_(instance_, valueId); });
}

bool HostPanel::isAvailable(const velm::host::PanelItem &control) {
    return control.type->storage == velm::host::Storage::none || value(control.valueId) != nullptr;
}

std::optional<int> HostPanel::wholeValue(unsigned int valueId) {
    const velm::host::ValueRow *described = row(valueId);
    const void *held = value(valueId);
    if (described == nullptr || described->storage != velm::host::Storage::whole || held == nullptr) return {};
    return *static_cast<const int *>(held);
}

void *HostPanel::pendingValue(unsigned int controlId) {
    const velm::host::PanelItem *control = find(controlId);
    if (control == nullptr) return nullptr;
    return pending_.value != nullptr && pending_.controlId == controlId ? pending_.value : value(control->valueId);
}

bool HostPanel::store(const velm::host::PanelItem &control, void *newValue) {
    if (control.type->storage == velm::host::Storage::none || newValue == nullptr || !isAvailable(control))
        return false;
    if (control.type->storage == velm::host::Storage::text &&
        std::strlen(static_cast<const char *>(newValue)) > kLongestText)
        return false;
    if (kind == kPanelOwn) {
        storeOwn(control, newValue);
        return true;
    }
    if (set_ == nullptr) return false;
    const Pending before = std::exchange(pending_, {.controlId = control.id, .value = newValue});
    const int result = callModule(maker, "panel setter", [&] { return set_(instance_, control.valueId, newValue); });
    pending_ = before;
    if (result == kSetRedraw || result == kSetRebuild) refresh();
    return result != kSetUnknown;
}

bool HostPanel::edit(const velm::host::PanelItem &control, void *newValue) {
    if (!store(control, newValue)) return false;
    notify(control, kEventSet);
    return true;
}

int HostPanel::notify(const velm::host::PanelItem &control, int event) {
    int result = 0;
    if (change_ != nullptr)
        result = callModule(maker, "panel change", [&] { return change_(this, control.id, control.valueId, event); });
    if (result == kSetRedraw || result == kSetRebuild) refresh();
    return result;
}

void HostPanel::press(const velm::host::PanelItem &control) {
    if (control.button != nullptr)
        callModule(maker, "panel button", [&] { control.button(this, static_cast<int>(control.id)); });
}

// ---- Rules ----

// Entries of a map that the value drives: as many as the control of the value has places.
int HostPanel::mapLength(unsigned int valueId) const {
    for (const unsigned int id : order_) {
        const velm::host::PanelItem &control = items_.at(id);
        if (control.valueId != valueId) continue;
        switch (control.type->kind) {
        case velm::host::ControlKind::choice:
        case velm::host::ControlKind::transform: return entryCount(control);
        case velm::host::ControlKind::flag: return 2;
        case velm::host::ControlKind::whole: return control.maximum ? *control.maximum + 1 : 0;
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

std::vector<const velm::host::EnableRule *> HostPanel::rulesFor(const velm::host::PanelItem &control) const {
    const std::set<unsigned int> containers = around(control.id);
    std::vector<const velm::host::EnableRule *> all;
    for (const velm::host::EnableRule &rule : rules_) {
        const bool meant = std::any_of(rule.ids.begin(), rule.ids.end(),
                                       [&](unsigned int id) { return id == control.id || containers.count(id) != 0; });
        if (meant) all.push_back(&rule);
    }
    return all;
}

bool HostPanel::isEnabled(const velm::host::PanelItem &control, std::string *message) {
    for (const velm::host::EnableRule *rule : rulesFor(control)) {
        const std::optional<int> driving = wholeValue(rule->valueId);
        if (!driving) continue;
        const bool inMap = rule->map != nullptr && *driving >= 0 && *driving < mapLength(rule->valueId);
        const bool enabled = rule->map != nullptr ? inMap && rule->map[*driving] != 0 : *driving != 0;
        if (enabled) continue;
        if (message != nullptr) *message = rule->message;
        return false;
    }
    return true;
}

std::optional<int> HostPanel::shownMember(const velm::host::PanelItem &stack) {
    const std::optional<int> driving = wholeValue(stack.valueId);
    if (!driving) return {};
    return shownFor(stack, *driving);
}

int HostPanel::shownFor(const velm::host::PanelItem &stack, int driving) const {
    int place = driving;
    if (stack.map != nullptr) place = driving >= 0 && driving < mapLength(stack.valueId) ? stack.map[driving] : -1;
    return place >= 0 && place < static_cast<int>(stack.members.size()) ? place : -1;
}
