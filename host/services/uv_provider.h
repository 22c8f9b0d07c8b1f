// The way from a node to the UV coordinates of a sample. The layer that knows the meshes stands above the nodes, so it
// leaves its lookup here and whoever serves nodes takes it from here.
#pragma once

#include "module/host.h"

namespace velm::host {

struct UvProvider {
    // Gives the UV coordinates of the sample's position: u to the right and v up, as in the mesh's file, not wrapped.
    // `mapName` names the map; null stands for the mesh's first. False, with *u and *v left alone, when the mesh has no
    // such map or the sample stands on no mesh. Allocates nothing. [render threads]
    bool (*lookup)(const ShadingSample *sample, const char *mapName, double *u, double *v) = nullptr;
};

namespace detail {
inline UvProvider currentUvProvider;
}

// Makes `provider` the one that is asked from now on; one without a lookup stands for none. [between frames]
inline void setUvProvider(UvProvider provider) { detail::currentUvProvider = provider; }

// As UvProvider::lookup; false while there is no provider. [render threads]
inline bool lookUpUv(const ShadingSample *sample, const char *mapName, double *u, double *v) {
    const UvProvider &provider = detail::currentUvProvider;
    return provider.lookup != nullptr && provider.lookup(sample, mapName, u, v);
}

} // namespace velm::host
