// Sines and cosines of many angles at once, several times as fast as one by one: no branch and no call in the loop, so
// that the compiler computes several of them in one step.
#pragma once

namespace velm::plugin {

// Radians. Correct to within 2 units in the last place of a result near 1, that is to 3e-16; 0 gives exactly 0 and 1.
// Where one of the angles is beyond a quarter of a million turns, infinite or not a number, the maths library is asked
// for all of them.
void sinesAndCosines(const double *angles, int count, double *sines, double *cosines);

// The same, bit for bit, by the instructions that every processor has, and by those that only some have. False, and
// what is written means nothing, where the maths library would be asked. Exposed for tests.
bool nearSinesAndCosinesNarrow(const double *angles, int count, double *sines, double *cosines);
bool nearSinesAndCosinesWide(const double *angles, int count, double *sines, double *cosines); // if hasWideVectors()
bool hasWideVectors();

} // namespace velm::plugin
