// A panel as text.
#pragma once

#include "host/panel/panel.h"

#include <iosfwd>

namespace velm::host {

// Prints a table of the panel's settings, by the names that scene files use, with their present values, units and
// limits, and then the panel as it is laid out, with its rules. Throws InputError for a panel with mistakes.
// [interface thread; not while rendering]
void printPanel(HostPanel &panel, std::ostream &out);

} // namespace velm::host
