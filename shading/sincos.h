// Sines and cosines of many angles at once. The loop has no branch and no call, so that the compiler vectorises it:
// several times as fast as one call for each angle.
#pragma once

namespace velm::plugin {

// Computes the sines and cosines of `count` angles, in radians. Correct to within 2 units in the last place of a result
// near 1, that is to 3e-16; an angle of 0 gives exactly 0 and 1. If one of the angles is beyond a quarter of a million
// turns, infinite or a NaN, the maths library computes all of them. [render threads]
void sinesAndCosines(const double *angles, int count, double *sines, double *cosines);

// The same, bit for bit, with the instructions that every processor has, and with those that only some have. False if
// the maths library is needed; then the results are meaningless. Exposed for tests.
bool nearSinesAndCosinesNarrow(const double *angles, int count, double *sines, double *cosines);
bool nearSinesAndCosinesWide(const double *angles, int count, double *sines, double *cosines); // if hasWideVectors()
bool hasWideVectors();

} // namespace velm::plugin
