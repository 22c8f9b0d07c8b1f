// How a panel's controls are laid out, and what a view or a listing wants to know of each of them.
#pragma once

#include "host/panel/panel.h"

#include <optional>
#include <string>
#include <vector>

namespace velm::host {

// A control, or a group, stack or set of tabs with what stands in it, in order.
struct LayoutItem {
    ItemKind kind = ItemKind::group;
    unsigned int id = 0; // 0 for the panel itself
    std::string label;
    std::vector<LayoutItem> items;
};

// The panel as a group of items. Controls stand in the order in which they were added; a group stands where the first
// of its members stood. Members that already stand deeper than their fellows bring their whole group with them. Throws
// InputError for a panel with mistakes.
LayoutItem layout(const HostPanel &panel);

// Where a control stands in a stack: it shows while the driving control has one of these entries.
struct StackPlace {
    std::string drivenBy; // label
    std::vector<std::string> shownFor;
};

struct ControlInfo {
    unsigned int id = 0;
    std::string name;  // the label that settings go by: "Clamp", "Clamp 2"; empty for none
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
    std::string message;                // why it is disabled
    bool shown = true;                  // false while a stack shows something else
    std::vector<std::string> enabledBy; // labels of the controls that enable it
    std::vector<std::string> groups;    // labels of the groups around it, outermost first; unlabelled ones are left out
    std::vector<StackPlace> stacks;
    bool leftAligned = false, narrow = false, dividerAfter = false;
};

// Every control in the order of the layout.
std::vector<ControlInfo> describeControls(HostPanel &panel);

} // namespace velm::host
