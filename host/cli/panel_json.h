// A panel as JSON.
#pragma once

#include "host/cli/json_output.h"
#include "host/help/help.h"
#include "host/panel/panel.h"

namespace velm::host {

// A list with an object for each control, in the order of the layout. What a control does not have is left out.
// InputError for a panel with mistakes. [interface thread; not while rendering]
Json jsonOfPanel(HostPanel &panel, const HelpSentences &sentences);

} // namespace velm::host
