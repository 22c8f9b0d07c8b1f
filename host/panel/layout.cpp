#include "host/panel/layout.h"

#include "host/panel/settings.h"

#include <algorithm>
#include <set>

namespace velm::host {

namespace {

using Path = std::vector<std::size_t>; // the indices of the items from the panel down to an item

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
    for (const std::size_t index : path) at = &at->items[index];
    return *at;
}

// The path of the innermost item that contains all of these.
Path commonContainer(const std::vector<Path> &paths) {
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
        for (const unsigned int id : panel.containers())
            for (const unsigned int member : panel.item(id)->members) members_.insert(member);
        for (const unsigned int id : panel.controls()) {
            const PanelItem &control = *panel.find(id);
            panelItem_.items.push_back(
                {.kind = ItemKind::control, .id = id, .label = panel.label(control), .items = {}});
        }
    }

    // A group may be a member of another one that was declared before it, so each waits until its members are placed.
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
        return panelItem_;
    }

  private:
    bool isReady(const PanelItem &container) const {
        return std::all_of(container.members.begin(), container.members.end(),
                           [this](unsigned int id) { return panel_.find(id) || placed_.count(id) != 0; });
    }

    void place(const PanelItem &container) {
        placed_.insert(container.id);
        std::vector<Path> paths;
        for (const unsigned int member : container.members) {
            Path path;
            if (findPath(panelItem_, member, path)) paths.push_back(path);
        }
        if (paths.empty()) return;
        const Path containerPath = commonContainer(paths);
        LayoutItem &around = follow(panelItem_, containerPath);
        // The members of tabs and stacks stay as they were declared; no group takes some of them.
        if (around.kind != ItemKind::group) return;
        std::vector<std::size_t> indices; // of the items around, in the order of the members
        for (const Path &path : paths) {
            const std::size_t member = path[containerPath.size()];
            if (std::ranges::find(indices, member) == indices.end()) indices.push_back(member);
        }
        if (!isScattered(container, indices)) gather(container, around, indices);
    }

    // True for a group whose members are not adjacent, and which has no label and is in no other group. It would change
    // nothing but the order of the controls, and is ignored.
    bool isScattered(const PanelItem &container, std::vector<std::size_t> indices) const {
        if (container.kind != ItemKind::group || !container.label.empty() || members_.count(container.id) != 0)
            return false;
        std::ranges::sort(indices);
        return indices.back() - indices.front() + 1 != indices.size();
    }

    // Replaces the items at these indices by one item that contains them.
    void gather(const PanelItem &container, LayoutItem &around, const std::vector<std::size_t> &indices) {
        LayoutItem item{.kind = container.kind, .id = container.id, .label = container.label, .items = {}};
        for (const std::size_t each : indices) item.items.push_back(around.items[each]);
        const std::size_t first = std::ranges::min(indices);
        std::vector<LayoutItem> items;
        for (std::size_t i = 0; i < around.items.size(); ++i) {
            if (i == first) items.push_back(item);
            if (std::ranges::find(indices, i) == indices.end()) items.push_back(around.items[i]);
        }
        around.items = items;
    }

    const HostPanel &panel_;
    std::set<unsigned int> members_, placed_;
    LayoutItem panelItem_;
};

// What a control inherits from the groups and stacks around it.
struct Surroundings {
    std::vector<std::string> groups;
    std::vector<StackPosition> stacks;
    bool shown = true;
};

const PanelItem *controlOf(const HostPanel &panel, unsigned int valueId) {
    for (const unsigned int id : panel.controls()) {
        const PanelItem *control = panel.find(id);
        if (control->valueId == valueId) return control;
    }
    return nullptr;
}

// The driving entries for which a stack shows the member at an index.
StackPosition stackPosition(const HostPanel &panel, const PanelItem &stack, int index) {
    StackPosition result;
    const PanelItem *driver = controlOf(panel, stack.valueId);
    if (!driver) return result;
    result.drivenBy = panel.uniqueLabel(*driver);
    std::vector<std::string> entries = panel.entries(*driver);
    if (driver->type->kind == ControlKind::flag) entries = {"off", "on"};
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const bool isTransform = driver->type->kind == ControlKind::transform;
        if (isTransform && i >= driver->transform.size()) break;
        const int value = isTransform ? driver->transform[i] : static_cast<int>(i);
        if (panel.shownFor(stack, value) == index) result.shownFor.push_back(entries[i]);
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
    for (const EnableRule *rule : panel.rulesFor(control))
        if (const PanelItem *driver = controlOf(panel, rule->valueId))
            info.enabledBy.push_back(panel.uniqueLabel(*driver));
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
    const bool isStack = item.kind == ItemKind::stack;
    const std::optional<int> shown = isStack ? panel.shownMember(*declared) : std::nullopt;
    for (const LayoutItem &inner : item.items) {
        Surroundings inside = around;
        if (!item.label.empty()) inside.groups.push_back(item.label);
        if (isStack) {
            const std::vector<unsigned int> &members = declared->members;
            const auto index = static_cast<int>(std::ranges::find(members, inner.id) - members.begin());
            inside.stacks.push_back(stackPosition(panel, *declared, index));
            if (shown && *shown != index) inside.shown = false;
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
