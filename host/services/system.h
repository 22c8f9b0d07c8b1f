// The "System ID" service: which application the plug-ins run in.
#pragma once

#include "module/host.h"

namespace velm::host {

// The word, in the form in which the lookup gives it. It is not an address, and may be null.
void *systemId();

// The top four bits are kSystemLayout (the initial setting), kSystemModelling or kSystemRenderNode; the rest is a
// serial number of the caller's choice. It applies to the activations that follow.
// [interface thread; not while rendering]
void setSystemId(unsigned int word);

} // namespace velm::host
