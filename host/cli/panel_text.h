// A panel as text.
#pragma once

#include "host/panel/panel.h"

#include <iosfwd>

namespace velm::host {

// Prints a table of the panel's settings, under the names that scene files use, with their current values, units and
// limits, and then the layout of the panel with its rules. Throws InputError for a panel with mistakes.
// [interface thread; not while rendering]
void printPanel(HostPanel &panel, std::ostream &out);

} // namespace velm::host
