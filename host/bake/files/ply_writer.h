// Writes a mesh with values at its vertices as a PLY file.
#pragma once

#include "host/bake/files/mesh_values.h"
#include "host/render/geometry/transform.h"

#include <string>

namespace velm::host {

// Throws InputError for a name that a number of vertices cannot have in PLY files: one with blanks or control
// characters, or that of another number, such as "x".
void checkPlyName(const std::string &name);

// A binary little-endian file of the mesh in the coordinates of its object, which `transform` maps to those of the
// mesh; Z is mirrored, since these files have right-handed axes. Polygons remain whole, except for those whose outline
// is not one loop, which are written as triangles. The file has the normals and the first UV map of the mesh's file,
// too, but not its materials.
//
// Values of 1 number become a property called `name`, 32-bit; colours become "red", "green", "blue" and "alpha" of 8
// bits. Numbers of colours below 0 and above 1 become 0 and 1. A vertex gets the mean of its corners; where these
// differ, it is written once for each different value. Vertices without a value get 0, or white. [any thread]
std::string plyFile(const Mesh &mesh, const MeshValues &values, const Transform &transform, const std::string &name);

} // namespace velm::host
