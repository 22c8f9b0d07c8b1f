// The renderer's sample points. They depend on the pixel and the sample only, never on the thread.
#pragma once

#include "host/base/hash.h"

#include <cstdint>

namespace velm::host {

struct UnitSquare {
    double x, y; // 0 <= x, y < 1
};

constexpr std::uint32_t combine(std::uint32_t seed, std::uint32_t value) {
    return scramble(seed ^ (value + 0x9e3779b9u + (seed << 6) + (seed >> 2)));
}

// Point `index` of van der Corput's sequence in base 2, as a 32-bit fraction, its bits inverted by the scrambling word.
constexpr std::uint32_t radicalInverse(std::uint32_t index, std::uint32_t word) {
    index = (index << 16) | (index >> 16);
    index = ((index & 0x00ff00ffu) << 8) | ((index & 0xff00ff00u) >> 8);
    index = ((index & 0x0f0f0f0fu) << 4) | ((index & 0xf0f0f0f0u) >> 4);
    index = ((index & 0x33333333u) << 2) | ((index & 0xccccccccu) >> 2);
    index = ((index & 0x55555555u) << 1) | ((index & 0xaaaaaaaau) >> 1);
    return index ^ word;
}

// The second dimension of Sobol's sequence, likewise.
constexpr std::uint32_t sobol(std::uint32_t index, std::uint32_t word) {
    for (std::uint32_t v = 1u << 31; index != 0; index >>= 1, v ^= v >> 1)
        if ((index & 1) != 0) word ^= v;
    return word;
}

// Point `index` of a (0,2)-sequence, randomly scrambled by `seed`: every power of two of its points is stratified in
// all elementary intervals (Kollig and Keller, "Efficient Multidimensional Sampling", 2002).
constexpr UnitSquare stratifiedPoint(std::uint32_t index, std::uint32_t seed) {
    constexpr double kUnit = 1.0 / 4294967296.0;
    return {radicalInverse(index, scramble(seed)) * kUnit, sobol(index, scramble(seed ^ 0x5bd1e995u)) * kUnit};
}

} // namespace velm::host
