// The tiles of a frame, and the sums of the samples of their pixels.
#pragma once

#include "host/image/picture.h"
#include "host/render/geometry/vector.h"
#include "host/render/scene/render_job.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace velm::host {

inline constexpr int kTileSize = 16; // pixels a side

// Of the samples of a pixel that are rendered. Samples are added one by one in double precision, so that the sum does
// not depend on how they are divided into passes.
struct PixelSum {
    Vec3 colour;
    std::uint32_t samples = 0, covered = 0; // covered: those that hit an object
};

// A frame's region in tiles. Sums only take memory for tiles that have some, but not all of their samples. Different
// tiles may be used by different threads.
class FrameTiles {
  public:
    // `samples`: of each pixel of the finished frame.
    FrameTiles(const Region &region, int samples);

    int count() const { return columns_ * rows_; }
    // The pixels of a tile; tiles at the right and lower edges may be smaller than others.
    Region region(int tile) const;

    // The sums of a tile's pixels, kTileSize by kTileSize in rows; null when all of them have all their samples.
    PixelSum *sums(int tile);

    // Writes the means of a tile's samples to the picture. A pixel without samples gets the mean of the pixel at the
    // upper left corner of its block of `step` by `step` pixels; if that has none either, it stays as it is.
    void show(int tile, int step, Picture &picture);

  private:
    using TileSums = std::unique_ptr<PixelSum[]>;
    bool isFinished(const Region &region, const PixelSum *sums) const;

    Region region_;
    std::uint32_t samples_;
    int columns_, rows_;
    std::vector<TileSums> sums_;
    std::vector<char> finished_; // not bool: threads write neighbouring elements
};

// The number of a pixel in its tile's sums; x and y count from the tile's upper left corner.
inline std::size_t pixelInTile(int x, int y) {
    return static_cast<std::size_t>(y) * kTileSize + static_cast<std::size_t>(x);
}

} // namespace velm::host
