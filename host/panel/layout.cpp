#include "host/panel/layout.h"

#include "host/panel/settings.h"

#include <algorithm>
#include <set>

namespace velm::host {

namespace {

using Path = std::vector<std::size_t>; // places of the items on the way from the panel down

bool findPath(const LayoutItem &from, unsigned int id, Path &path) {
    for (std::size_t i = 0; i < from.items.size(); ++i) {
        path.push_back(i);
        if (from.items[i].id == id || findPath(from.items[i], id, path)) return true;
        path.pop_back();
    }
    return false;
}

LayoutItem &follow(LayoutItem &from, const Path &path) {
    LayoutItem *at = &from;
    for (const std::size_t place : path) at = &at->items[place];
    return *at;
}

// The way to the innermost item that holds all of these.
Path commonHolder(const std::vector<Path> &paths) {
    Path common(paths.front().begin(), paths.front().end() - 1);
    for (const Path &path : paths) {
        const std::size_t most = std::min(common.size(), path.size() - 1);
        const auto differ =
            std::mismatch(common.begin(), common.begin() + static_cast<std::ptrdiff_t>(most), path.begin());
        common.erase(differ.first, common.end());
    }
    return common;
}

class Builder {
  public:
    explicit Builder(const HostPanel &panel) : panel_(panel) {
        for (const unsigned int id : panel.containers()) {
            for (const unsigned int member : panel.item(id)->members) members_.insert(member);
        }
        for (const unsigned int id : panel.controls()) {
            const PanelItem &control = *panel.find(id);
            whole_.items.push_back({.kind = ItemKind::control, .id = id, .label = panel.label(control), .items = {}});
        }
    }

    // A group may be named as a member before it is declared, so each waits for those that it holds.
    LayoutItem build() {
        std::vector<unsigned int> waiting = panel_.containers();
        while (!waiting.empty()) {
            std::vector<unsigned int> later;
            for (const unsigned int id : waiting) {
                if (isReady(*panel_.item(id)))
                    place(*panel_.item(id));
                else
                    later.push_back(id);
            }
            waiting = later;
        }
        return whole_;
    }

  private:
    bool isReady(const PanelItem &container) const {
        return std::all_of(container.members.begin(), container.members.end(),
                           [this](unsigned int id) { return panel_.find(id) != nullptr || placed_.count(id) != 0; });
    }

    void place(const PanelItem &container) {
        placed_.insert(container.id);
        std::vector<Path> paths;
        for (const unsigned int member : container.members) {
            Path path;
            if (findPath(whole_, member, path)) paths.push_back(path);
        }
        if (paths.empty()) return;
        const Path holderPath = commonHolder(paths);
        LayoutItem &holder = follow(whole_, holderPath);
        // Pages and alternatives are what they were declared to be; nothing gathers some of them.
        if (holder.kind != ItemKind::group) return;
        std::vector<std::size_t> places; // in the holder, in the order of the members
        for (const Path &path : paths) {
            const std::size_t member = path[holderPath.size()];
            if (std::find(places.begin(), places.end(), member) == places.end()) places.push_back(member);
        }
        if (!leavesOrder(container, places)) gather(container, holder, places);
    }

    // A group without a label that nothing refers to, and whose members stand apart, shows nothing but a new order.
    bool leavesOrder(const PanelItem &container, std::vector<std::size_t> places) const {
        if (container.kind != ItemKind::group || !container.label.empty() || members_.count(container.id) != 0)
            return false;
        std::sort(places.begin(), places.end());
        return places.back() - places.front() + 1 != places.size();
    }

    void gather(const PanelItem &container, LayoutItem &holder, const std::vector<std::size_t> &places) {
        LayoutItem item{.kind = container.kind, .id = container.id, .label = container.label, .items = {}};
        for (const std::size_t each : places) item.items.push_back(holder.items[each]);
        const std::size_t first = *std::min_element(places.begin(), places.end());
        std::vector<LayoutItem> items;
        for (std::size_t i = 0; i < holder.items.size(); ++i) {
            if (i == first) items.push_back(item);
            if (std::find(places.begin(), places.end(), i) == places.end()) items.push_back(holder.items[i]);
        }
        holder.items = items;
    }

    const HostPanel &panel_;
    std::set<unsigned int> members_, placed_;
    LayoutItem whole_;
};

// What the control in question inherits from what stands around it.
struct Surroundings {
    std::vector<std::string> groups;
    std::vector<StackPlace> stacks;
    bool shown = true;
};

const PanelItem *controlOf(const HostPanel &panel, unsigned int valueId) {
    for (const unsigned int id : panel.controls()) {
        const PanelItem *control = panel.find(id);
        if (control->valueId == valueId) return control;
    }
    return nullptr;
}

// The driving entries for which a stack shows its member at `place`.
StackPlace stackPlace(const HostPanel &panel, const PanelItem &stack, int place) {
    StackPlace result;
    const PanelItem *driver = controlOf(panel, stack.valueId);
    if (driver == nullptr) return result;
    result.drivenBy = panel.uniqueLabel(*driver);
    std::vector<std::string> entries = panel.entries(*driver);
    if (driver->type->kind == ControlKind::flag) entries = {"off", "on"};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const bool mapped = driver->type->kind == ControlKind::transform;
        if (mapped && i >= driver->transform.size()) break;
        const int value = mapped ? driver->transform[i] : static_cast<int>(i);
        if (panel.shownFor(stack, value) == place) result.shownFor.push_back(entries[i]);
    }
    return result;
}

ControlInfo describeControl(HostPanel &panel, const PanelItem &control, const Surroundings &around) {
    ControlInfo info;
    info.id = control.id;
    info.name = panel.uniqueLabel(control);
    info.label = panel.label(control);
    info.type = control.type->name;
    info.unit = unitName(control.type->unit);
    info.value = describeValue(panel, control);
    info.entries = panel.entries(control);
    info.componentLabels = control.vectorLabels;
    info.minimum = control.minimum;
    info.maximum = control.maximum;
    info.step = control.step;
    info.limitsEnforced = control.minimumEnforced || control.maximumEnforced;
    info.sensitivity = control.sensitivity;
    info.available = panel.isAvailable(control);
    info.enabled = panel.isEnabled(control, &info.message) && info.available;
    info.shown = around.shown;
    for (const EnableRule *rule : panel.rulesFor(control)) {
        if (const PanelItem *driver = controlOf(panel, rule->valueId))
            info.enabledBy.push_back(panel.uniqueLabel(*driver));
    }
    info.groups = around.groups;
    info.stacks = around.stacks;
    info.leftAligned = control.leftAligned;
    info.narrow = control.narrow;
    info.dividerAfter = control.dividerAfter;
    return info;
}

void describeItems(HostPanel &panel, const LayoutItem &item, const Surroundings &around,
                   std::vector<ControlInfo> &all) {
    if (item.kind == ItemKind::control) {
        all.push_back(describeControl(panel, *panel.find(item.id), around));
        return;
    }
    const PanelItem *declared = panel.item(item.id);
    const bool stack = item.kind == ItemKind::stack;
    const std::optional<int> shown = stack ? panel.shownMember(*declared) : std::nullopt;
    for (const LayoutItem &inner : item.items) {
        Surroundings inside = around;
        if (!item.label.empty()) inside.groups.push_back(item.label);
        if (stack) {
            const std::vector<unsigned int> &members = declared->members;
            const auto place = static_cast<int>(std::find(members.begin(), members.end(), inner.id) - members.begin());
            inside.stacks.push_back(stackPlace(panel, *declared, place));
            if (shown && *shown != place) inside.shown = false;
        }
        describeItems(panel, inner, inside, all);
    }
}

} // namespace

LayoutItem layout(const HostPanel &panel) {
    panel.check();
    return Builder(panel).build();
}

std::vector<ControlInfo> describeControls(HostPanel &panel) {
    std::vector<ControlInfo> all;
    describeItems(panel, layout(panel), {}, all);
    return all;
}

} // namespace velm::host
