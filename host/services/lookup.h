// The lookup function that the host hands to servers, and the services that it knows.
#pragma once

#include "module/host.h"

namespace velm {

// A service by name, or null when the host offers none of it. [any thread that the host calls from]
void *lookup(const char *service, int use);

// Offers a service of a layer above this one, as the renderer's cameras; null withdraws it. The pointer outlives
// the offer. [interface thread; not while rendering]
void offerService(const char *service, void *pointer);

// The service that the calling thread last looked up in vain since it cleared this; null when there is none.
const char *lastMissingService();
void clearMissingService();

const HostNodeFuncs *nodeFuncs();
const HostNodeInputFuncs *nodeInputFuncs();
const HostNodeOutputFuncs *nodeOutputFuncs();
const HostNodeEditorFuncs *nodeEditorFuncs();
const HostNodeUtilityFuncs *nodeUtilityFuncs();

} // namespace velm
