// The vertex maps of samples, for the host's own nodes. The renderer, which knows the meshes, registers its functions
// here, and the service kVertexMapFuncs calls them.
#pragma once

#include "host/graph/builtin/vertex_maps.h"

namespace velm::host {

// Sets the functions; {} for none. [between frames]
void setVertexMapProvider(VertexMapFuncs provider);

// The service's table. Without a provider, no sample is on a map.
const VertexMapFuncs *vertexMapFuncs();

} // namespace velm::host
