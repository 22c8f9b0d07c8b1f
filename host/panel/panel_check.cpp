// What a panel's hints and value description must be like before values are read through them.

#include "host/base/error.h"
#include "host/base/hex.h"
#include "host/panel/panel.h"

#include <cstdio>

using velm::host::hex;

namespace {

constexpr int kMostRows = 65536;

} // namespace

void HostPanel::describe(const HostPanelValue *rows, HostPanelGetter *get, HostPanelSetter *set) {
    get_ = get;
    set_ = set;
    int count = 0;
    for (const HostPanelValue *each = rows; each != nullptr && each->id != 0; ++each) {
        if (++count > kMostRows) return problem("the description of the values has no end");
        const char *type = each->type != nullptr ? each->type : "";
        const velm::host::Storage storage = velm::host::storageOfValueType(type);
        if (storage == velm::host::Storage::none)
            problem("the value " + hex(each->id) + " has the unknown type \"" + type + "\"");
        rows_[each->id] = {.label = each->label != nullptr ? each->label : "", .type = type, .storage = storage};
    }
}

void HostPanel::checkControl(const velm::host::PanelItem &control) const {
    const auto fail = [&control](const std::string &what) {
        throw velm::host::InputError("the panel's control " + hex(control.id) + " " + what);
    };
    const velm::host::ControlType &type = *control.type;
    if (type.storage == velm::host::Storage::none) return;
    const velm::host::ValueRow *described = row(control.valueId);
    if (described == nullptr) fail("has the value " + hex(control.valueId) + ", which is not described");
    // Reading through a pointer to something else would be fatal.
    if (described->storage != type.storage)
        fail("of type \"" + std::string(type.name) + "\" cannot show a value of type \"" + described->type + "\"");
    if (kind == kPanelOwn && type.storage == velm::host::Storage::animated)
        fail("is animated, and the panel has no instance");
    if (kind == kPanelForm && get_ == nullptr) fail("has no getter");
    const bool popup = control.popupCount != nullptr && control.popupName != nullptr;
    const bool listed = type.kind == velm::host::ControlKind::choice || type.kind == velm::host::ControlKind::transform;
    if (listed && !popup && control.entries.empty()) fail("has no entries");
    if (type.kind == velm::host::ControlKind::transform && !popup && control.transform.size() != control.entries.size())
        fail("does not have a value for each entry");
}

void HostPanel::checkDriver(unsigned int valueId, bool mapped) const {
    const velm::host::ValueRow *described = row(valueId);
    if (described == nullptr || described->storage != velm::host::Storage::whole)
        throw velm::host::InputError("a rule of the panel is driven by " + hex(valueId) +
                                     ", which is no integer value of it");
    if (!mapped) return;
    for (const unsigned int id : order_) {
        const velm::host::PanelItem &control = items_.at(id);
        if (control.valueId == valueId && (control.popupCount != nullptr || mapLength(valueId) > 0)) return;
    }
    throw velm::host::InputError("a rule of the panel has a map over " + hex(valueId) +
                                 ", which has no known number of places");
}

void HostPanel::checkRules() const {
    const auto isDeclared = [this](unsigned int id) {
        const velm::host::PanelItem *found = item(id);
        return found != nullptr && found->kind != velm::host::ItemKind::unknown;
    };
    for (const velm::host::EnableRule &rule : rules_) {
        checkDriver(rule.valueId, rule.map != nullptr);
        for (const unsigned int id : rule.ids) {
            if (!isDeclared(id)) throw velm::host::InputError("the panel enables " + hex(id) + ", which is not on it");
        }
    }
    for (const unsigned int container : containerOrder_) {
        const velm::host::PanelItem &group = items_.at(container);
        if (group.kind == velm::host::ItemKind::stack) checkDriver(group.valueId, group.map != nullptr);
        for (const unsigned int id : group.members) {
            if (!isDeclared(id)) throw velm::host::InputError("the panel groups " + hex(id) + ", which is not on it");
        }
        if (around(container).count(container) != 0)
            throw velm::host::InputError("the panel's group " + hex(container) + " contains itself");
    }
}

void HostPanel::check() const {
    if (!problem_.empty()) throw velm::host::InputError("the panel is wrong: " + problem_);
    for (const auto &[id, each] : items_) {
        if (each.kind == velm::host::ItemKind::unknown)
            throw velm::host::InputError("the panel has a hint for " + hex(id) + ", which is not on it");
        if (each.kind == velm::host::ItemKind::control) checkControl(each);
    }
    checkRules();
}
