// The services of the host that need no scene: what plug-ins find through the lookup function.
#pragma once

#include "module/host.h"

namespace velm::host {

// Offers the services of this room to plug-ins; see host/load/lookup.h. To be called once by each program that loads
// plug-ins or makes nodes, before the first of them. [interface thread; not while rendering]
void offerNodeServices();

// The tables of the services about nodes.
const HostNodeFuncs *nodeFuncs();
const HostNodeInputFuncs *nodeInputFuncs();
const HostNodeOutputFuncs *nodeOutputFuncs();
const HostNodeEditorFuncs *nodeEditorFuncs();
const HostNodeUtilityFuncs *nodeUtilityFuncs();

} // namespace velm::host
