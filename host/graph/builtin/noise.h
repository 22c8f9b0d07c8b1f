// Gradient noise.
#pragma once

namespace velm::host {

// Noise in space after K. Perlin, "Improving Noise", SIGGRAPH 2002: gradients towards the twelve edges of a cube,
// blended by 6 t^5 - 15 t^4 + 10 t^3. An integer hash chooses the gradient of each lattice point, instead of a table of
// permutations, so that the noise does not repeat every 256 cells. Returns a number from -1.04 to 1.04; 0 at lattice
// points and where a position is not finite. The same on every machine. [any thread]
double gradientNoise(double x, double y, double z);

enum class NoiseShape { plain, magnitude };

// Octaves of noise: each has the frequency of the one before times `lacunarity`, and its amplitude times `gain`.
struct NoiseOctaves {
    int octaves = 1;
    double frequency = 1; // of the first one; its amplitude is 1
    double lacunarity = 2, gain = 0.5;
    NoiseShape shape = NoiseShape::plain; // the noise, or its magnitude
};

struct NoiseSum {
    double sum = 0;
    double amplitude = 0; // the sum of the octaves' amplitudes
};

// [any thread]
NoiseSum sumNoise(const double position[3], const NoiseOctaves &noise);

// A sine wave from 0 to 1 of the period 1; 0.5 at 0. [any thread]
double wave(double position);

} // namespace velm::host
