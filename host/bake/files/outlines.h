// The outlines of a mesh's polygons, which the mesh has as triangles.
#pragma once

#include "host/bake/files/mesh_values.h"

#include <cstdint>
#include <vector>

namespace velm::host {

// Appends the outline of a polygon to `outlines`: the vertices around it, in the sense of its triangles. If the outline
// is not one loop that passes each vertex once, appends each triangle of the polygon instead. Vertices are those of
// PolygonValues::vertexOf. [any thread]
void addOutlines(const PolygonValues &polygons, std::size_t polygon, std::vector<std::vector<std::uint32_t>> &outlines);

} // namespace velm::host
