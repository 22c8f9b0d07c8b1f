// Checks of a panel's hints and value description. Values are read through them only when they pass.
#include "host/base/error.h"
#include "host/base/hex.h"
#include "host/panel/panel.h"

#include <fmt/format.h>

using namespace velm::host;

namespace {

constexpr int kMostRows = 65536;

} // namespace

void HostPanel::describe(const HostPanelValue *rows, HostPanelGetter *get, HostPanelSetter *set) {
    get_ = get;
    set_ = set;
    int count = 0;
    for (const HostPanelValue *each = rows; each && each->id != 0; ++each) {
        if (++count > kMostRows) return problem("the description of the values has no end");
        const char *type = each->type ? each->type : "";
        const Storage storage = storageOfValueType(type);
        if (storage == Storage::none)
            problem(fmt::format("the value {} has the unknown type \"{}\"", hex(each->id), type));
        rows_[each->id] = {.label = each->label ? each->label : "", .type = type, .storage = storage};
    }
}

void HostPanel::checkControl(const PanelItem &control) const {
    const auto fail = [&control](const std::string &what) {
        throw InputError(fmt::format("the panel's control {} {}", hex(control.id), what));
    };
    const ControlType &type = *control.type;
    if (type.storage == Storage::none) return;
    const ValueRow *described = row(control.valueId);
    if (!described) fail(fmt::format("has the value {}, which is not described", hex(control.valueId)));
    // Reading a value as one of another type could crash.
    if (described->storage != type.storage)
        fail(fmt::format("of type \"{}\" cannot show a value of type \"{}\"", type.name, described->type));
    if (kind == kPanelOwn && type.storage == Storage::animated) fail("is animated, and the panel has no instance");
    if (kind == kPanelForm && !get_) fail("has no getter");
    const bool popup = control.popupCount && control.popupName;
    const bool listed = type.kind == ControlKind::choice || type.kind == ControlKind::transform;
    if (listed && !popup && control.entries.empty()) fail("has no entries");
    if (type.kind == ControlKind::transform && !popup && control.transform.size() != control.entries.size())
        fail("does not have a value for each entry");
}

void HostPanel::checkDriver(unsigned int valueId, bool mapped) const {
    const ValueRow *described = row(valueId);
    if (!described || described->storage != Storage::integer)
        throw InputError(fmt::format("a rule of the panel is driven by {}, which is not an integer value of the panel",
                                     hex(valueId)));
    if (!mapped) return;
    for (const unsigned int id : order_) {
        const PanelItem &control = items_.at(id);
        if (control.valueId == valueId && (control.popupCount || mapLength(valueId) > 0)) return;
    }
    throw InputError(
        fmt::format("a rule of the panel has a map over {}, whose number of entries is unknown", hex(valueId)));
}

void HostPanel::checkRules() const {
    const auto isDeclared = [this](unsigned int id) {
        const PanelItem *found = item(id);
        return found && found->kind != ItemKind::unknown;
    };
    for (const EnableRule &rule : rules_) {
        checkDriver(rule.valueId, rule.map != nullptr);
        for (const unsigned int id : rule.ids)
            if (!isDeclared(id)) throw InputError(fmt::format("the panel enables {}, which is not on it", hex(id)));
    }
    for (const unsigned int container : containerOrder_) {
        const PanelItem &group = items_.at(container);
        if (group.kind == ItemKind::stack) checkDriver(group.valueId, group.map != nullptr);
        for (const unsigned int id : group.members)
            if (!isDeclared(id)) throw InputError(fmt::format("the panel groups {}, which is not on it", hex(id)));
        if (around(container).count(container) != 0)
            throw InputError(fmt::format("the panel's group {} contains itself", hex(container)));
    }
}

void HostPanel::check() const {
    if (!problem_.empty()) throw InputError("the panel is wrong: " + problem_);
    for (const auto &[id, each] : items_) {
        if (each.kind == ItemKind::unknown)
            throw InputError(fmt::format("the panel has a hint for {}, which is not on it", hex(id)));
        if (each.kind == ItemKind::control) checkControl(each);
    }
    checkRules();
}
