#include "host/panel/panel.h"

#include "host/guard/module_call.h"

#include <algorithm>
#include <cstring>
#include <utility>

using velm::callModule;

HostPanel::~HostPanel() {
    if (destroyed_ != nullptr) callModule(maker, "panel destroyed", [&] { destroyed_(data(0)); });
}

void HostPanel::problem(const std::string &text) {
    if (problem_.empty()) problem_ = text;
}

velm::PanelItem &HostPanel::itemFor(unsigned int id) {
    velm::PanelItem &found = items_[id];
    found.id = id;
    return found;
}

const velm::PanelItem *HostPanel::item(unsigned int id) const {
    const auto found = items_.find(id);
    return found == items_.end() ? nullptr : &found->second;
}

const velm::PanelItem *HostPanel::find(unsigned int controlId) const {
    const velm::PanelItem *found = item(controlId);
    return found != nullptr && found->kind == velm::ItemKind::control ? found : nullptr;
}

const velm::ValueRow *HostPanel::row(unsigned int valueId) const {
    const auto found = rows_.find(valueId);
    return found == rows_.end() ? nullptr : &found->second;
}

void *HostPanel::data(unsigned int id) const {
    const auto found = data_.find(id);
    return found == data_.end() ? nullptr : found->second;
}

std::string HostPanel::label(const velm::PanelItem &labelled) const {
    if (!labelled.label.empty() || labelled.kind != velm::ItemKind::control) return labelled.label;
    const velm::ValueRow *value = row(labelled.valueId);
    return value != nullptr ? value->label : "";
}

std::string HostPanel::uniqueLabel(const velm::PanelItem &control) const {
    const std::string text = label(control);
    int number = 0;
    for (const unsigned int id : order_) {
        const velm::PanelItem &each = items_.at(id);
        if (label(each) == text) ++number;
        if (id == control.id) break;
    }
    return text.empty() || number < 2 ? text : text + " " + std::to_string(number);
}

std::vector<std::string> HostPanel::entries(const velm::PanelItem &control) const {
    if (control.popupCount == nullptr || control.popupName == nullptr) return control.entries;
    std::vector<std::string> all;
    const int count = entryCount(control);
    for (int i = 0; i < count; ++i) {
        const char *name = callModule(maker, "panel popup name", [&] { return control.popupName(instance_, i); });
        all.emplace_back(name != nullptr ? name : "");
    }
    return all;
}

std::optional<int> HostPanel::chosenEntry(const velm::PanelItem &control) {
    const std::optional<int> held = wholeValue(control.valueId);
    if (!held) return {};
    if (control.kind == velm::ItemKind::control && control.type->kind == velm::ControlKind::transform) {
        const auto found = std::find(control.transform.begin(), control.transform.end(), *held);
        return found == control.transform.end() ? -1 : static_cast<int>(found - control.transform.begin());
    }
    return *held >= 0 && *held < entryCount(control) ? *held : -1;
}

int HostPanel::entryCount(const velm::PanelItem &control) const {
    if (control.popupCount != nullptr)
        return callModule(maker, "panel popup count", [&] { return control.popupCount(instance_); });
    return static_cast<int>(control.entries.size());
}

// ---- Values ----

void *HostPanel::ownValue(unsigned int valueId) {
    const velm::ValueRow *described = row(valueId);
    if (described == nullptr) return nullptr;
    velm::OwnValue &held = own_[valueId];
    switch (described->storage) {
    case velm::Storage::whole: return &held.whole;
    case velm::Storage::real: return held.real;
    case velm::Storage::text: return held.text.data();
    default: return nullptr;
    }
}

void HostPanel::storeOwn(const velm::PanelItem &control, const void *newValue) {
    velm::OwnValue &held = own_[control.valueId];
    switch (control.type->storage) {
    case velm::Storage::whole: held.whole = *static_cast<const int *>(newValue); break;
    case velm::Storage::real:
        std::copy_n(static_cast<const double *>(newValue), control.type->components, held.real);
        break;
    case velm::Storage::text: held.text = static_cast<const char *>(newValue); break;
    default: break;
    }
}

void *HostPanel::value(unsigned int valueId) {
    if (kind == kPanelOwn) return ownValue(valueId);
    if (get_ == nullptr || instance_ == nullptr || valueId == 0) return nullptr;
    return callModule(maker, "panel getter", [&] { return get_(instance_, valueId); });
}

bool HostPanel::isAvailable(const velm::PanelItem &control) {
    return control.type->storage == velm::Storage::none || value(control.valueId) != nullptr;
}

std::optional<int> HostPanel::wholeValue(unsigned int valueId) {
    const velm::ValueRow *described = row(valueId);
    const void *held = value(valueId);
    if (described == nullptr || described->storage != velm::Storage::whole || held == nullptr) return {};
    return *static_cast<const int *>(held);
}

void *HostPanel::pendingValue(unsigned int controlId) {
    const velm::PanelItem *control = find(controlId);
    if (control == nullptr) return nullptr;
    return pending_.value != nullptr && pending_.controlId == controlId ? pending_.value : value(control->valueId);
}

bool HostPanel::store(const velm::PanelItem &control, void *newValue) {
    if (control.type->storage == velm::Storage::none || newValue == nullptr || !isAvailable(control)) return false;
    if (control.type->storage == velm::Storage::text && std::strlen(static_cast<const char *>(newValue)) > kLongestText)
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

bool HostPanel::edit(const velm::PanelItem &control, void *newValue) {
    if (!store(control, newValue)) return false;
    notify(control, kEventSet);
    return true;
}

int HostPanel::notify(const velm::PanelItem &control, int event) {
    int result = 0;
    if (change_ != nullptr)
        result = callModule(maker, "panel change", [&] { return change_(this, control.id, control.valueId, event); });
    if (result == kSetRedraw || result == kSetRebuild) refresh();
    return result;
}

void HostPanel::press(const velm::PanelItem &control) {
    if (control.button != nullptr)
        callModule(maker, "panel button", [&] { control.button(this, static_cast<int>(control.id)); });
}

// ---- Rules ----

// Entries of a map that the value drives: as many as the control of the value has places.
int HostPanel::mapLength(unsigned int valueId) const {
    for (const unsigned int id : order_) {
        const velm::PanelItem &control = items_.at(id);
        if (control.valueId != valueId) continue;
        switch (control.type->kind) {
        case velm::ControlKind::choice:
        case velm::ControlKind::transform: return entryCount(control);
        case velm::ControlKind::flag: return 2;
        case velm::ControlKind::whole: return control.maximum ? *control.maximum + 1 : 0;
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

std::vector<const velm::EnableRule *> HostPanel::rulesFor(const velm::PanelItem &control) const {
    const std::set<unsigned int> containers = around(control.id);
    std::vector<const velm::EnableRule *> all;
    for (const velm::EnableRule &rule : rules_) {
        const bool meant = std::any_of(rule.ids.begin(), rule.ids.end(),
                                       [&](unsigned int id) { return id == control.id || containers.count(id) != 0; });
        if (meant) all.push_back(&rule);
    }
    return all;
}

bool HostPanel::isEnabled(const velm::PanelItem &control, std::string *message) {
    for (const velm::EnableRule *rule : rulesFor(control)) {
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

std::optional<int> HostPanel::shownMember(const velm::PanelItem &stack) {
    const std::optional<int> driving = wholeValue(stack.valueId);
    if (!driving) return {};
    return shownFor(stack, *driving);
}

int HostPanel::shownFor(const velm::PanelItem &stack, int driving) const {
    int place = driving;
    if (stack.map != nullptr) place = driving >= 0 && driving < mapLength(stack.valueId) ? stack.map[driving] : -1;
    return place >= 0 && place < static_cast<int>(stack.members.size()) ? place : -1;
}
