// The renderer's sample points. They depend on the pixel and the sample only, never on the thread.
#pragma once

#include "host/base/hash.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace velm::host {

struct UnitSquare {
    double x, y; // 0 <= x, y < 1
};

constexpr std::uint32_t combine(std::uint32_t seed, std::uint32_t value) {
    return scramble(seed ^ (value + 0x9e3779b9u + (seed << 6) + (seed >> 2)));
}

constexpr std::uint32_t reversedBits(std::uint32_t index) {
    index = (index << 16) | (index >> 16);
    index = ((index & 0x00ff00ffu) << 8) | ((index & 0xff00ff00u) >> 8);
    index = ((index & 0x0f0f0f0fu) << 4) | ((index & 0xf0f0f0f0u) >> 4);
    index = ((index & 0x33333333u) << 2) | ((index & 0xccccccccu) >> 2);
    return ((index & 0x55555555u) << 1) | ((index & 0xaaaaaaaau) >> 1);
}

// Point `index` of van der Corput's sequence in base 2, as a 32-bit fraction, its bits inverted by the scrambling word.
constexpr std::uint32_t radicalInverse(std::uint32_t index, std::uint32_t word) { return reversedBits(index) ^ word; }

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

// A permutation of the indices that maps each aligned block of 2^k of them to such a block, for every k. So the points
// of a sequence at these indices are stratified as those at the indices themselves, but come in another order: points
// of two sequences at the same index are then independent of each other. The hash is that of Laine and Karras
// ("Stratified Sampling for Stochastic Transparency", 2011), used as by Burley ("Practical Hash-based Owen Scrambling",
// 2020).
constexpr std::uint32_t shuffledIndex(std::uint32_t index, std::uint32_t seed) {
    std::uint32_t bits = reversedBits(index) + seed;
    bits ^= bits * 0x6c50b47cu;
    bits ^= bits * 0xb82f1e52u;
    bits ^= bits * 0xc7afe638u;
    bits ^= bits * 0x8d22f6e6u;
    return reversedBits(bits);
}

// The purposes of the points of a camera sample other than the point on the picture.
enum class SamplePurpose : std::uint32_t { lens = 1, time = 2 };

// The point for a purpose of a pixel's sample `index`; independent of those for other purposes.
constexpr UnitSquare samplePoint(std::uint32_t index, std::uint32_t pixelSeed, SamplePurpose purpose) {
    const std::uint32_t seed = combine(pixelSeed, 0x9d2c5680u ^ static_cast<std::uint32_t>(purpose));
    return stratifiedPoint(shuffledIndex(index, scramble(seed)), seed);
}

// A point of the disc of radius 1 about the origin.
struct DiscPoint {
    double x, y;
};

// Maps the square to the disc with equal areas, so that neighbours stay neighbours (Shirley and Chiu, "A Low Distortion
// Map Between Disk and Square", 1997).
inline DiscPoint onDisc(const UnitSquare &point) {
    const double x = 2 * point.x - 1, y = 2 * point.y - 1;
    if (x == 0 && y == 0) return {0, 0};
    constexpr double kQuarter = std::numbers::pi / 4;
    const bool isWide = std::fabs(x) > std::fabs(y);
    const double radius = isWide ? x : y;
    const double angle = isWide ? kQuarter * (y / x) : 2 * kQuarter - kQuarter * (x / y);
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

// Maps the square with equal areas to the regular polygon whose corners are on the disc's edge, the first one at
// `rotation`, an angle in radians from +x to +y.
inline DiscPoint onPolygon(const UnitSquare &point, int sides, double rotation) {
    const double scaled = point.x * sides;
    const int side = std::min(static_cast<int>(scaled), sides - 1);
    const double step = 2 * std::numbers::pi / sides, from = rotation + side * step, to = from + step;
    const double radius = std::sqrt(point.y), along = scaled - side;
    const auto between = [&](double a, double b) { return radius * (a + along * (b - a)); };
    return {between(std::cos(from), std::cos(to)), between(std::sin(from), std::sin(to))};
}

} // namespace velm::host
