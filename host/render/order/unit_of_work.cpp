#include "host/render/order/unit_of_work.h"

#include "host/render/geometry/sampling.h"

#include <numeric>
#include <utility>

namespace velm::host {
namespace {

constexpr std::uint32_t kMostWordsPerPixel = 16;

// Blocks of pixels whose rays are alike, so that they run through the same parts of the ray structure.
constexpr int kBlockSize = 4, kBlockPixels = kBlockSize * kBlockSize; // pixels
constexpr int kBlocksASide = kTileSize / kBlockSize, kBlocks = kBlocksASide * kBlocksASide;

// A number from 0 to `count` - 1 of a 32-bit hash.
std::uint32_t below(std::uint32_t count, std::uint32_t hash) {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(hash) * count >> 32);
}

bool isInLevel(int x, int y, int level) {
    const auto isOnGrid = [x, y](int step) { return x % step == 0 && y % step == 0; };
    return isOnGrid(kLevelSteps[static_cast<std::size_t>(level)]) &&
           (level == 0 || !isOnGrid(kLevelSteps[static_cast<std::size_t>(level - 1)]));
}

} // namespace

std::uint32_t UnitOfWork::hash() const {
    std::uint32_t result = seed;
    for (const int part : {frame, column, row, sample, level})
        result = combine(result, static_cast<std::uint32_t>(part));
    return result;
}

std::span<const std::uint16_t> PixelOrder::arrange(const UnitOfWork &unit, const Region &area, By by) {
    count_ = 0;
    if (by == By::hash) {
        shuffleBlocks(unit, area);
        return {pixels_.data(), count_};
    }
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x) add(unit, x, y);
    return {pixels_.data(), count_};
}

void PixelOrder::add(const UnitOfWork &unit, int x, int y) {
    if (unit.sample > 0 || isInLevel(x, y, unit.level))
        pixels_[count_++] = static_cast<std::uint16_t>(y * kTileSize + x);
}

void PixelOrder::shuffleBlocks(const UnitOfWork &unit, const Region &area) {
    std::array<std::uint8_t, kBlocks> blocks;
    std::iota(blocks.begin(), blocks.end(), std::uint8_t{0});
    std::uint32_t word = unit.hash();
    // R. Durstenfeld, "Algorithm 235: Random Permutation", CACM 7 (7), 1964; each block when its turn comes.
    for (int left = kBlocks; left > 0; --left) {
        word = scramble(word + 0x9e3779b9u);
        std::swap(blocks[static_cast<std::size_t>(left - 1)], blocks[below(static_cast<std::uint32_t>(left), word)]);
        const int block = blocks[static_cast<std::size_t>(left - 1)];
        const int blockX = block % kBlocksASide * kBlockSize, blockY = block / kBlocksASide * kBlockSize;
        // One of the sixteen orders that exchange columns, rows, and their neighbours.
        const int exchange = static_cast<int>(word & (kBlockPixels - 1));
        for (int i = 0; i < kBlockPixels; ++i) {
            const int x = blockX + (i ^ exchange) % kBlockSize, y = blockY + (i ^ exchange) / kBlockSize;
            if (x >= area.left && x < area.right && y >= area.top && y < area.bottom) add(unit, x, y);
        }
    }
}

std::uint32_t wordsToSkip(std::uint32_t hash, std::size_t pixels) {
    return below(static_cast<std::uint32_t>(pixels) * kMostWordsPerPixel, scramble(hash ^ 0x5851f42du));
}

} // namespace velm::host
