// The services that need no scene, which plug-ins find through the lookup function.
#pragma once

#include "module/host.h"

namespace velm::host {

// Offers these services to plug-ins; see host/load/lookup.h. Each program that loads plug-ins or creates nodes has to
// call this once, before the first of them. [interface thread; not while rendering]
void offerNodeServices();

// The tables of the services about nodes.
const HostNodeFuncs *nodeFuncs();
const HostNodeInputFuncs *nodeInputFuncs();
const HostNodeOutputFuncs *nodeOutputFuncs();
const HostNodeEditorFuncs *nodeEditorFuncs();
const HostNodeUtilityFuncs *nodeUtilityFuncs();

} // namespace velm::host
