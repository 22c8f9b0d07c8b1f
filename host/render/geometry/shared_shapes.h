// Which objects have the same shape, and when that is worth a mesh that they share.
#pragma once

#include "host/scene/format/description.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace velm::host {

// The number of triangles from which it pays to keep an acceleration structure for them and to refer to it, instead of
// building them into the one of the whole scene: they take about 10 MB there, and 0.1 s for each frame. With fewer, the
// time that rays take for the further level counts more.
inline constexpr std::size_t kWorthwhileTriangles = 100'000;

struct ShapeHash {
    std::size_t operator()(const ShapeDescription &shape) const;
};

// How many objects have the same shape.
class ShapeCounts {
  public:
    explicit ShapeCounts(const std::vector<ObjectDescription> &objects);
    std::size_t of(const ShapeDescription &shape) const; // at least 1

  private:
    std::unordered_map<ShapeDescription, std::size_t, ShapeHash> counts_;
};

// Whether the mesh of a shape that `count` objects have is made once for all of them, in object coordinates. This is
// true for mesh files, so that they are read once, and for spheres with many triangles.
bool isMadeOnce(const ShapeDescription &shape, std::size_t count);

// Whether the objects with the same mesh of so many triangles refer to it, instead of having copies in world space.
// `moves`: from frame to frame, so that each frame would need another copy.
bool isWorthInstances(std::size_t triangles, std::size_t count, bool moves);

} // namespace velm::host
