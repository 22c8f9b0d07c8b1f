// Writes the colours of a mesh's vertices into the glTF file that the mesh was read from.
#pragma once

#include "host/bake/files/mesh_values.h"
#include "host/render/geometry/transform.h"

#include <string>
#include <vector>

namespace velm::host {

// The bytes of a GLB file that has the values as the colours of its vertices (COLOR_0), and everything else as in
// `file`, a .gltf or .glb file that `mesh` was read from; `transform` maps its coordinates to those of the mesh. A
// number becomes a grey colour. A vertex gets the mean of its corners in all nodes that show it. Vertices without a
// value in a mesh with values become white; the values replace colours that the mesh has. Throws InputError for a file
// that cannot hold the values, for example because it is compressed, and if the mesh was not read from it.
// [interface thread]
std::string gltfWithColours(const std::string &file, const Mesh &mesh, const MeshValues &values,
                            const Transform &transform);

// The names of images and other files that the glTF file refers to besides its buffers, as it has them. Such names are
// relative to the directory of the file. InputError as above. [interface thread]
std::vector<std::string> namesInGltf(const std::string &file);

} // namespace velm::host
