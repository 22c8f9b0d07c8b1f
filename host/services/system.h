// The "System ID" service: which application the plug-ins run in.
#pragma once

#include "module/host.h"

namespace velm::host {

// The word as the lookup gives it. It is no address, and may be null.
void *systemId();

// kSystemLayout, the setting at the start, kSystemModelling or kSystemRenderNode in the top four bits; the rest is a
// serial number of the caller's choice. Holds for the activations that follow. [interface thread; not while rendering]
void setSystemId(unsigned int word);

} // namespace velm::host
