// A panel's hint list taken apart into its hints, for tests that look at what a panel is told.
#pragma once

#include "module/host.h"

#include <span>
#include <string>
#include <vector>

namespace velm::plugin {

struct Hint {
    HostWord tag;
    std::vector<HostHint> arguments; // those of a fixed number
    std::vector<unsigned int> ids;   // of a list, without the 0 that ends it
};

// Throws std::runtime_error at a tag that no panel knows.
std::vector<Hint> hintsOf(const HostHint *words);

// The hints with this tag, in order.
std::vector<Hint> hintsWith(HostWord tag, const HostHint *words);

// "8001 minimum 1" and the like for the hints that say one thing of one control: what a table of expectations holds.
std::vector<std::string> limitsOf(const HostHint *words);

// The entries of a popup or a row of buttons.
std::vector<std::string> entriesOf(const HostPanel &panel, unsigned int id);

// One control of a panel, and the value behind it.
struct Control {
    unsigned int id;
    const char *label;   // null: none
    const char *value;   // type of its value; null: it has none
    const char *control; // its own type
};

// Expects a panel to have these controls and values, in this order, and no others.
void expectControls(const HostPanel &panel, std::span<const Control> expected);

} // namespace velm::plugin
