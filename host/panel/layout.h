// The layout of a panel's controls, and the facts about each control that a view or a listing needs.
#pragma once

#include "host/panel/panel.h"

#include <optional>
#include <string>
#include <vector>

namespace velm::host {

// A control, or a group, stack or set of tabs with its contents in order.
struct LayoutItem {
    ItemKind kind = ItemKind::group;
    unsigned int id = 0; // 0 for the panel itself
    std::string label;
    std::vector<LayoutItem> items;
};

// The panel as a group of items. Controls keep the order in which they were added; a group is at the position of its
// first member. A member that is already in a group of its own brings that whole group with it. InputError for a panel
// with mistakes.
LayoutItem layout(const HostPanel &panel);

// The condition under which a stack shows a control: the driving control has one of these entries.
struct StackPosition {
    std::string drivenBy; // label
    std::vector<std::string> shownFor;
};

struct ControlInfo {
    unsigned int id = 0;
    std::string name;  // of the setting: "Clamp", "Clamp 2"; empty for a control without a label
    std::string label; // as shown
    std::string type;  // "percent-env"
    std::string unit;  // "%", "m", "degrees" or ""
    std::string value; // as shown: "20", "1 0.5 0", "Custom", "on", "\"text\"", "3 keys"; empty when unavailable
    std::vector<std::string> entries;
    std::vector<std::string> componentLabels;
    std::optional<int> minimum, maximum, step; // in the shown unit
    bool limitsEnforced = false;
    std::optional<int> sensitivity;
    bool available = true;              // false: a connection feeds it
    bool enabled = true;                // false while rules disable it, or it is unavailable
    std::string message;                // of the rule that disables it; may be empty
    bool shown = true;                  // false while a stack shows another member
    std::vector<std::string> enabledBy; // labels of the controls that enable it
    std::vector<std::string> groups;    // labels of the groups around it, outermost first; without unlabelled ones
    std::vector<StackPosition> stacks;
    bool leftAligned = false, narrow = false, dividerAfter = false;
};

// Every control in the order of the layout.
std::vector<ControlInfo> describeControls(HostPanel &panel);

} // namespace velm::host
