// From the corners of a mesh to those of the object file that it was read from.
#pragma once

#include "host/bake/files/mesh_values.h"
#include "host/object/vertex_map_writer.h"
#include "host/render/geometry/transform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

// How a mesh was read from an object file.
struct ObjectMeshSource {
    std::string file;            // for errors
    std::optional<int> layer;    // the only one, or all visible layers
    int subdivision = 0;         // the level of subdivision surfaces
    std::uint64_t mostBytes = 0; // of memory that subdividing may take
    Transform transform;         // to the mesh's coordinates
};

// The values at the corners of the object's polygons, weighted by area. A polygon of a control cage gets the values of
// the points of the subdivision surface to which its own points move. `geometry` is what readObject gave. Throws
// InputError if the mesh was not read from that object. [any thread]
std::vector<LayerCornerValues> objectValues(const Mesh &mesh, const MeshValues &values, const ObjectGeometry &geometry,
                                            const ObjectMeshSource &source);

} // namespace velm::host
