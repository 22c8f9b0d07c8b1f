// Conservative rasterisation of a mesh in a UV map: finds every triangle that covers some of a texel, and how much.
#pragma once

#include "host/bake/texel_geometry.h"
#include "host/render/geometry/mesh.h"
#include "host/render/order/unit_of_work.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace velm::host {

// A triangle at one of the places at which a repeated UV map shows it: moved so many times the map's size to the left
// and down.
struct PlacedTriangle {
    std::uint32_t triangle;
    std::int16_t shiftU, shiftV;
};

// Converts the UV coordinates of a mesh to texels of a picture, whose upper edge is at v = 1.
class TexelMap {
  public:
    // The mesh and the map have to outlive it.
    TexelMap(const Mesh &mesh, const UvMap &map, int width, int height)
        : mesh_(mesh), map_(map), width_(width), height_(height) {}

    const Mesh &mesh() const { return mesh_; }
    const UvMap &map() const { return map_; }
    int width() const { return width_; }
    int height() const { return height_; }

    // The texels of a vertex's coordinates; NaN where it has none.
    TexelPoint texelOf(std::uint32_t vertex, int shiftU = 0, int shiftV = 0) const {
        const std::array<float, 2> &uv = map_.values[vertex];
        return {(static_cast<double>(uv[0]) - shiftU) * width_, (1 - (static_cast<double>(uv[1]) - shiftV)) * height_};
    }
    TexelTriangle triangleAt(const PlacedTriangle &placed) const;

  private:
    const Mesh &mesh_;
    const UvMap &map_;
    const int width_, height_;
};

// Triangles that something is the matter with: how many, and the polygon of the first one.
struct TriangleCount {
    std::size_t count = 0;
    std::uint32_t firstPolygon = 0;

    void add(std::uint32_t polygon) {
        if (count++ == 0) firstPolygon = polygon;
    }
};

// A triangle that covers some of a texel.
struct TexelFragment {
    PlacedTriangle placed;
    float area; // that it covers, 0 to 1, not 0
};

// The fragments of the texels of one tile.
class TileFragments {
  public:
    // Of a texel, by its number y * kTileSize + x within the tile: in the order of the mesh's triangles.
    std::span<const TexelFragment> of(std::size_t texel) const {
        return {fragments_.data() + first_[texel], fragments_.data() + first_[texel + 1]};
    }

  private:
    friend class TexelRaster;
    struct Found {
        std::uint32_t texel;
        TexelFragment fragment;
    };
    void sort(); // `found_` to `fragments_`

    std::vector<Found> found_;
    std::vector<TexelFragment> fragments_;
    std::array<std::uint32_t, kTilePixels + 1> first_{};
};

class TexelRaster {
  public:
    // Only triangles for which `isWanted` is true are in the raster. The map has to outlive it. InputError, with the
    // polygon, for a triangle that spans more than kMostRepeats repetitions of the map. [any thread]
    static constexpr int kMostRepeats = 100;
    TexelRaster(const TexelMap &map, const std::function<bool(std::uint32_t triangle)> &isWanted);

    const TexelMap &map() const { return map_; }

    // What the wanted triangles have: no coordinates, no area in the map, or the coordinates of a mirror image. The
    // first two are not in the raster.
    const TriangleCount &missing() const { return missing_; }
    const TriangleCount &flat() const { return flat_; }
    const TriangleCount &mirrored() const { return mirrored_; }
    // Those with coordinates outside 0 to 1, which repeat.
    const TriangleCount &repeated() const { return repeated_; }
    // No triangle is in the raster.
    bool isEmpty() const { return triangles_.empty(); }

    // Finds the fragments of a tile of the picture; those that cover less than some millionths of a texel are left out.
    // [any thread]
    void rasterise(int column, int row, TileFragments &fragments) const;

  private:
    template <class Take>
    void forPlaces(std::uint32_t triangle, Take take) const;
    template <class Take>
    void forTiles(const PlacedTriangle &placed, Take take) const;
    bool examine(std::uint32_t triangle);
    void rasteriseTriangle(const PlacedTriangle &placed, const Region &tile, TileFragments &fragments) const;

    const TexelMap &map_;
    int columns_, rows_; // of tiles
    TriangleCount missing_, flat_, mirrored_, repeated_;
    std::vector<std::size_t> starts_;       // by tile: the first one of its triangles; one more than there are tiles
    std::vector<PlacedTriangle> triangles_; // tile by tile
};

} // namespace velm::host
