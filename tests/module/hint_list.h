// Splits the hint list of a panel into its hints, for tests.
#pragma once

#include "module/host.h"

#include <span>
#include <string>
#include <vector>

namespace velm::plugin {

struct Hint {
    HostWord tag;
    std::vector<HostHint> arguments; // the arguments whose number is fixed
    std::vector<unsigned int> ids;   // the identifiers of a list, without the final 0
};

// Throws std::runtime_error for an unknown tag.
std::vector<Hint> hintsOf(const HostHint *words);

// The hints with this tag, in order.
std::vector<Hint> hintsWith(HostWord tag, const HostHint *words);

// The hints with a single fact about one control, as text such as "8001 minimum 1", for tables of expectations.
std::vector<std::string> limitsOf(const HostHint *words);

// The entries of a popup or a row of buttons.
std::vector<std::string> entriesOf(const HostPanel &panel, unsigned int id);

// One control of a panel, and the value behind it.
struct Control {
    unsigned int id;
    const char *label;   // null if it has none
    const char *value;   // the type of its value; null if it has none
    const char *control; // the type of the control
};

// Expects that a panel has exactly these controls and values, in this order.
void expectControls(const HostPanel &panel, std::span<const Control> expected);

} // namespace velm::plugin
