// Subdivision surfaces: replaces control cages by polygons on their limit surfaces.
//
// Cages are subdivided by the rules of Catmull and Clark ("Recursively Generated B-Spline Surfaces on Arbitrary
// Topological Meshes", 1978), and the points are moved to the limit of infinitely many subdivisions. SUBD polygons are
// defined by these rules. How LightWave computes PTCH patches is not published; their surface is close to this one, but
// not equal to it.
//
// All PTCH and SUBD polygons of a layer form one cage: the surface is continuous across common edges, even between
// polygons of different types or with different surfaces. The border of the cage becomes a smooth curve, even where
// plain polygons use the same points.
#pragma once

#include "host/base/limits.h"
#include "host/object/object_geometry.h"

#include <cstdint>
#include <string>

namespace velm::host {

struct Subdivision {
    int level = kDefaultSubdivision; // each edge becomes 2^level edges. 0 to kMostSubdivision; 0: the cages themselves
    std::uint64_t mostBytes = 0;     // of memory that subdividing may take
};

// Adds the polygons of the subdivision surfaces, and the normals of their points, to the visible layers. The polygons
// of the cages keep their indices, but are no longer drawn. A polygon with n corners becomes n * 4^(level - 1)
// polygons, which have its surface. Vertex maps are interpolated according to their MapSubdivision. Unsupported
// features are added to the losses. `file` is the name of the object file, for errors. Throws InputError if the
// polygons would take more than `mostBytes`. [any thread]
void subdivide(ObjectGeometry &geometry, const Subdivision &wanted, const std::string &file);

} // namespace velm::host
