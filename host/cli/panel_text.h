// A panel as text.
#pragma once

#include "host/help/help.h"
#include "host/panel/layout.h"
#include "host/panel/panel.h"

#include <iosfwd>
#include <string>

namespace velm::host {

// Prints a table of the panel's settings, under the names that scene files use, with their current values, units and
// limits, and then the layout of the panel with its rules. `sentences` are printed below the settings and the buttons
// that they describe. Throws InputError for a panel with mistakes. [interface thread; not while rendering]
void printPanel(HostPanel &panel, const HelpSentences &sentences, std::ostream &out);

// What kind of value a control has, such as "number, with keys" or "choice"; or "button" or "drawing".
std::string controlKindText(const ControlInfo &control);

// Whether the control has a value that scene files can set. [any thread]
bool isSetting(const ControlInfo &control);

// How far the lines of a section are indented, and help below the line that it describes.
inline constexpr std::size_t kIndent = 2, kHelpIndent = 4;

} // namespace velm::host
