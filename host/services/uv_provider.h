// The UV coordinates of samples, for nodes. The renderer, which knows the meshes, registers its lookup here, and
// "NodeUtilityFuncs" calls it.
#pragma once

#include "module/host.h"

namespace velm::host {

struct UvProvider {
    // Writes the UV coordinates of the sample's position: u to the right and v up, as in the mesh's file, not wrapped.
    // `mapName` names the map; null selects the mesh's first map. False, with *u and *v unchanged, when the mesh has
    // no such map or the sample is not on a mesh. Allocates nothing. [render threads]
    bool (*lookup)(const ShadingSample *sample, const char *mapName, double *u, double *v) = nullptr;
};

namespace detail {
inline UvProvider currentUvProvider;
}

// Sets the provider; one without a lookup for none. [between frames]
inline void setUvProvider(UvProvider provider) { detail::currentUvProvider = provider; }

// As UvProvider::lookup; false while there is no provider. [render threads]
inline bool lookUpUv(const ShadingSample *sample, const char *mapName, double *u, double *v) {
    const UvProvider &provider = detail::currentUvProvider;
    return provider.lookup && provider.lookup(sample, mapName, u, v);
}

} // namespace velm::host
