// A service that the host offers for its own nodes: the vertex maps of the meshes of the scene.
#pragma once

#include "module/host.h"

namespace velm::host {

inline constexpr char kVertexMapFuncs[] = "Velm Vertex Maps";

// Both functions look up a map by its name; a null or empty name selects the mesh's first map of the kind. They return
// false, and leave the result unchanged, if the sample is not on a mesh with such a map or the value there is not
// finite. They allocate nothing.
struct VertexMapFuncs {
    // Writes red, green, blue and alpha at the sample, with the values of the file; 1 is full. The alpha is 1 if the
    // map has none. [render threads]
    bool (*colour)(const char *mapName, const ShadingSample *sample, double result[4]) = nullptr;
    // Writes the weight at the sample, where 1 is 100 %. [render threads]
    bool (*weight)(const char *mapName, const ShadingSample *sample, double *result) = nullptr;
};

} // namespace velm::host
