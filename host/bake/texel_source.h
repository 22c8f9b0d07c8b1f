// The points of a mesh that the texels of a picture show.
#pragma once

#include "host/bake/bake_points.h"
#include "host/bake/normal_space.h"
#include "host/bake/texel_raster.h"
#include "host/base/shared_memory.h"

#include <cstdint>

namespace velm::host {

// What was found in a tile.
struct TileFacts {
    std::uint32_t covered;     // texels
    std::uint32_t overlapped;  // texels that triangles cover several times
    std::uint32_t polygons[2]; // two that overlap in the first of these
};

// The only sample of a texel is at its middle; several are distributed over it. A sample that no triangle covers is
// moved: the only one to the nearest point of a triangle that covers a part of the texel, one of several to a random
// point of the covered part. The alpha is the covered fraction of the texel. Where triangles overlap, the first one of
// the mesh counts.
class TexelSource final : public PointSource {
  public:
    // `tangents`, of the raster's mesh and map, may be null. `facts`, by tile, are filled in, in shared memory. All
    // have to outlive it.
    TexelSource(const TexelRaster &raster, std::uint32_t index, const RenderObject &object, const Tangents *tangents,
                const Transform *toObject, SharedArray<TileFacts> &facts);

    double find(int x, int y, const UnitSquare &random, bool isOnlySample, SurfacePoint &point) override;
    // Normals to the coordinates of the object if there is `toObject`, and from there to those of the tangents if there
    // are tangents.
    Vec3 convert(const SurfacePoint &point, const Vec3 &value) const override;

  private:
    void enterTile(int column, int row);

    const TexelRaster &raster_;
    const std::uint32_t index_;
    const RenderObject &owner_;
    const Tangents *const tangents_;
    const Transform *const toObject_;
    SharedArray<TileFacts> &facts_;
    TileFragments fragments_;
    int column_ = -1, row_ = -1; // of the tile whose fragments these are
};

} // namespace velm::host
