// The tiles of a frame, and the sums of the samples of their pixels.
#pragma once

#include "host/base/shared_memory.h"
#include "host/image/layers.h"
#include "host/image/picture.h"
#include "host/render/geometry/vector.h"
#include "host/render/order/unit_of_work.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

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

// The sums of a tile's pixels, kTileSize by kTileSize in rows.
struct TileSums {
    PixelSum *pixels = nullptr;
    double *layers = nullptr; // of the channels of layers, pixel by pixel; null if there are none

    // Adds a sample to a pixel (see pixelInTile). `values` are those of its layers, by these rules.
    void add(std::size_t pixel, const Vec3 &colour, double alpha, const double *values,
             const std::vector<LayerRule> &rules) const {
        addLayers(pixel, values, rules);
        pixels[pixel].add(colour, alpha);
    }

  private:
    void addLayers(std::size_t pixel, const double *values, const std::vector<LayerRule> &rules) const {
        double *const sums = layers + pixel * rules.size();
        const bool isFirst = pixels[pixel].samples == 0;
        for (std::size_t i = 0; i < rules.size(); ++i)
            if (rules[i] == LayerRule::mean || isFirst) sums[i] += values[i];
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
    // `samples`: of each pixel of the finished frame. `window` lies in the picture. `rules`: of the channels of layers.
    // `tileSize`: pixels a side, kTileSize at most.
    FrameTiles(int width, int height, const Region &window, int samples, std::vector<LayerRule> rules,
               int tileSize = kTileSize);

    int count() const { return columns_ * rows_; }
    Tile tile(int number) const;

    // The sums of a tile's pixels; null when all of them have all their samples.
    TileSums sums(int number);

    // Writes the means of a tile's samples to the picture. A pixel without samples gets the mean of the pixel at the
    // upper left corner of its block of `step` by `step` pixels; if that has none either, it stays as it is.
    void show(int number, int step, Picture &picture);

  private:
    bool isFinished(const Tile &tile, const PixelSum *sums) const;
    void writeLayers(const PixelSum &sum, const double *layers, float *values) const;

    int width_, height_, tileSize_;
    Region window_;
    std::uint32_t samples_;
    std::vector<LayerRule> rules_;
    int left_, top_, columns_, rows_; // of the tiles, in the grid
    SharedArray<PixelSum> sums_;
    SharedArray<double> layerSums_;
    SharedArray<std::atomic<bool>> finished_;
};

// The number of a pixel in its tile's sums; x and y count from the tile's upper left corner.
inline std::size_t pixelInTile(int x, int y) {
    return static_cast<std::size_t>(y) * kTileSize + static_cast<std::size_t>(x);
}

} // namespace velm::host
