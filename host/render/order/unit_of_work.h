// Units of work: what the renderer divides a frame into in repeatable order. A unit is one sample of each pixel of one
// tile. It begins from a known state: with the module's random stream at a place that depends on the unit alone, and
// nodes with memory initialised anew. So its result does not depend on what was rendered before, by which process, or
// in which order.
//
// The first sample is divided into levels, from coarse to fine, so that a preview can show it early: each level is a
// unit of its own.
#pragma once

#include "host/base/region.h"

#include <array>
#include <cstdint>
#include <span>

namespace velm::host {

inline constexpr int kTileSize = 32; // pixels a side; tiles form a grid that begins at the picture's upper left corner
inline constexpr int kTilePixels = kTileSize * kTileSize;

// The distance of the pixels of each level of the first sample. A pixel belongs to the first level that has it.
inline constexpr std::array kLevelSteps = {8, 4, 2, 1};

struct UnitOfWork {
    std::uint32_t seed; // of the job, or what is the same for all units
    int frame;
    int column, row; // of the tile in the grid
    int sample;
    int level; // index into kLevelSteps for sample 0; 0 for the others

    // A hash of all of these.
    std::uint32_t hash() const;
};

// The pixels of a unit, in the order in which it evaluates them: as numbers y * kTileSize + x within the tile.
class PixelOrder {
  public:
    enum class By { rows, hash };

    // `area`: the part of the tile that is evaluated, in pixels from the tile's upper left corner. By::hash shuffles
    // small blocks of pixels, for nodes that draw: neighbouring tiles and successive frames, whose places in the stream
    // may be close together, then give words that are close together to pixels that are not.
    std::span<const std::uint16_t> arrange(const UnitOfWork &unit, const Region &area, By by);

  private:
    // Adds a pixel if the unit has it.
    void add(const UnitOfWork &unit, int x, int y);
    void shuffleBlocks(const UnitOfWork &unit, const Region &area);

    std::array<std::uint16_t, kTilePixels> pixels_;
    std::size_t count_ = 0;
};

// How many words of the stream a unit with this many pixels skips: up to 16 for each pixel, by the unit's hash.
// Skipping them takes some tens of nanoseconds for each pixel on average, little beside the evaluation of nodes that
// draw.
std::uint32_t wordsToSkip(std::uint32_t hash, std::size_t pixels);

} // namespace velm::host
