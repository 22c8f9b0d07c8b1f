// The tiles of a frame, and the sums of the samples of their pixels.
#pragma once

#include "host/base/shared_memory.h"
#include "host/image/picture.h"
#include "host/render/geometry/vector.h"
#include "host/render/order/unit_of_work.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace velm::host {

// Of the samples of a pixel that are rendered. Samples are added one by one in double precision, so that the sum does
// not depend on how they are divided into passes.
struct PixelSum {
    Vec3 colour;
    std::uint32_t samples = 0;
    float alpha = 0; // exact for samples of 0 and 1

    void add(const Vec3 &sample, double sampleAlpha) {
        colour += sample;
        ++samples;
        alpha += static_cast<float>(sampleAlpha);
    }
};

// Classic order goes through smaller tiles. Pictures of nodes with memory depend on it.
inline constexpr int kClassicTileSize = 16;

// A tile of the grid, which begins at the picture's upper left corner.
struct Tile {
    int column, row;
    int left, top;    // of its upper left pixel
    Region inPicture; // its pixels; tiles at the right and lower edges may be smaller than others
    Region inWindow;  // those of them that are rendered for the frame
};

// The tiles that a frame's window touches. All of it is in memory that is shared with processes forked from this one.
// Sums only take memory for tiles that have some, but not all of their samples. Different tiles may be used by
// different threads and processes.
class FrameTiles {
  public:
    // `samples`: of each pixel of the finished frame. `window` lies in the picture. `tileSize`: pixels a side,
    // kTileSize at most.
    FrameTiles(int width, int height, const Region &window, int samples, int tileSize = kTileSize);

    int count() const { return columns_ * rows_; }
    Tile tile(int number) const;

    // The sums of a tile's pixels, kTileSize by kTileSize in rows; null when all of them have all their samples.
    PixelSum *sums(int number);

    // Writes the means of a tile's samples to the picture. A pixel without samples gets the mean of the pixel at the
    // upper left corner of its block of `step` by `step` pixels; if that has none either, it stays as it is.
    void show(int number, int step, Picture &picture);

  private:
    bool isFinished(const Tile &tile, const PixelSum *sums) const;

    int width_, height_, tileSize_;
    Region window_;
    std::uint32_t samples_;
    int left_, top_, columns_, rows_; // of the tiles, in the grid
    SharedArray<PixelSum> sums_;
    SharedArray<std::atomic<bool>> finished_;
};

// The number of a pixel in its tile's sums; x and y count from the tile's upper left corner.
inline std::size_t pixelInTile(int x, int y) {
    return static_cast<std::size_t>(y) * kTileSize + static_cast<std::size_t>(x);
}

} // namespace velm::host
