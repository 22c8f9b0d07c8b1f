// The "File Request 2" service. This host has no windows to ask in: requests are answered from what was prepared.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::host {

// The function that the lookup gives. A request finds the file prepared for it, which serves once, or counts as
// cancelled by the user. A file whose name does not fit the request's buffers gives result -1; another version of the
// request gives 1 and touches nothing. [interface thread; not while rendering]
HostFileRequestFunc *fileRequest();

// The file that the next request finds; empty for none.
void prepareFileChoice(std::string path);

} // namespace velm::host
