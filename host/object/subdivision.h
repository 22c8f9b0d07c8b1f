// Subdivision surfaces: polygons of the surface that a control cage stands for.
//
// Cages are subdivided by the rules of Catmull and Clark ("Recursively Generated B-Spline Surfaces on Arbitrary
// Topological Meshes", 1978), and the points are moved to the limit of infinitely many subdivisions. This is what SUBD
// polygons mean. How LightWave computes PTCH patches is not published; their surface is close to this one, but not
// equal to it.
//
// All cages of a layer are one: PTCH and SUBD polygons with common points continue each other, whatever their surfaces.
// Where no other polygon of a cage continues it, its border is a smooth curve, also where plain polygons have the same
// points.
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

// Adds the polygons of the subdivision surfaces, and the normals of their points, to the visible layers. They replace
// the cages, which keep their numbers, but are no longer drawn. A polygon with n corners becomes n * 4^(level - 1)
// polygons, which have its surface. Vertex maps are interpolated as their MapSubdivision says. What is not done is
// added to the losses. `file` is the name of the object file, for errors. InputError for polygons that would take too
// much memory. [any thread]
void subdivide(ObjectGeometry &geometry, const Subdivision &wanted, const std::string &file);

} // namespace velm::host
