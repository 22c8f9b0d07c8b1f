#include "host/graph/builtin/noise.h"

#include "host/base/hash.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace velm::host {

namespace {

std::uint32_t hash(std::int64_t x, std::int64_t y, std::int64_t z) {
    const std::uint32_t first = scramble(static_cast<std::uint32_t>(x));
    const std::uint32_t second = scramble(first + static_cast<std::uint32_t>(y));
    return scramble(second + static_cast<std::uint32_t>(z));
}

// The dot product with one of the twelve directions (+-1, +-1, 0), (+-1, 0, +-1), (0, +-1, +-1). Four of them occur
// twice, so that four bits select one.
double alongGradient(std::uint32_t bits, double x, double y, double z) {
    const std::uint32_t choice = bits & 15;
    const double u = choice < 8 ? x : y;
    const double v = choice < 4 ? y : choice == 12 || choice == 14 ? x : z;
    return ((choice & 1) == 0 ? u : -u) + ((choice & 2) == 0 ? v : -v);
}

double fade(double t) { return t * t * t * (t * (t * 6 - 15) + 10); }
double lerp(double t, double a, double b) { return a + t * (b - a); }

} // namespace

double gradientNoise(double x, double y, double z) {
    constexpr double kLimit = 1e15; // a larger double has almost no fraction left
    if (!(std::fabs(x) < kLimit && std::fabs(y) < kLimit && std::fabs(z) < kLimit)) return 0;
    const double floorX = std::floor(x), floorY = std::floor(y), floorZ = std::floor(z);
    const auto cellX = static_cast<std::int64_t>(floorX), cellY = static_cast<std::int64_t>(floorY),
               cellZ = static_cast<std::int64_t>(floorZ);
    const double inX = x - floorX, inY = y - floorY, inZ = z - floorZ;
    const double u = fade(inX), v = fade(inY), w = fade(inZ);

    double plane[2];
    for (int k = 0; k < 2; ++k) {
        double line[2];
        for (int j = 0; j < 2; ++j) {
            const double left = alongGradient(hash(cellX, cellY + j, cellZ + k), inX, inY - j, inZ - k);
            const double right = alongGradient(hash(cellX + 1, cellY + j, cellZ + k), inX - 1, inY - j, inZ - k);
            line[j] = lerp(u, left, right);
        }
        plane[k] = lerp(v, line[0], line[1]);
    }
    return lerp(w, plane[0], plane[1]);
}

double wave(double position) { return 0.5 + 0.5 * std::sin(2 * std::numbers::pi * position); }

NoiseSum sumNoise(const double position[3], const NoiseOctaves &noise) {
    NoiseSum result;
    double frequency = noise.frequency, amplitude = 1;
    for (int octave = 0; octave < noise.octaves; ++octave) {
        const double value = gradientNoise(position[0] * frequency, position[1] * frequency, position[2] * frequency);
        result.sum += amplitude * (noise.shape == NoiseShape::magnitude ? std::fabs(value) : value);
        result.amplitude += amplitude;
        frequency *= noise.lacunarity;
        amplitude *= noise.gain;
    }
    return result;
}

} // namespace velm::host
