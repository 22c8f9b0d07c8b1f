// Gradient noise.
#pragma once

namespace velm::host {

// Noise over space after K. Perlin, "Improving Noise", SIGGRAPH 2002: gradients towards the twelve edges of a cube,
// blended by 6 t^5 - 15 t^4 + 10 t^3; the gradient of a lattice point is chosen by an integer hash instead of a table
// of permutations, so that nothing repeats every 256 cells. Within -1.04 and 1.04, 0 at lattice points and where a
// position is not finite, the same on every machine. [any thread]
double gradientNoise(double x, double y, double z);

} // namespace velm::host
