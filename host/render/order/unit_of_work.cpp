#include "host/render/order/unit_of_work.h"

#include "host/render/geometry/sampling.h"

#include <utility>

namespace velm::host {
namespace {

constexpr std::uint32_t kMostWordsPerPixel = 16;

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
    std::size_t count = 0;
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            if (unit.sample > 0 || isInLevel(x, y, unit.level))
                pixels_[count++] = static_cast<std::uint16_t>(y * kTileSize + x);
    if (by == By::hash) { // a shuffle (R. Durstenfeld, "Algorithm 235: Random Permutation", CACM 7 (7), 1964)
        std::uint32_t word = unit.hash();
        for (std::size_t left = count; left > 1; --left) {
            word = scramble(word + 0x9e3779b9u);
            std::swap(pixels_[left - 1], pixels_[below(static_cast<std::uint32_t>(left), word)]);
        }
    }
    return {pixels_.data(), count};
}

std::uint32_t wordsToSkip(std::uint32_t hash, std::size_t pixels) {
    return below(static_cast<std::uint32_t>(pixels) * kMostWordsPerPixel, scramble(hash ^ 0x5851f42du));
}

} // namespace velm::host
