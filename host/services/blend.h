// Blending one colour over another.
#pragma once

namespace velm::host {

// result = bottom + opacity (blended - bottom), where the mode (kBlendNormal and so on) gives the blended colour; an
// unknown mode counts as normal. Colours and opacity are not clamped. Where a formula would divide by 0 or less, its
// limit from within 0 to 1 is used for each component: a dodge by a top of 1 or more leaves a bottom of 0 or less at 0
// and makes any other at least 1; a burn by a top of 0 or less makes a bottom of 1 or more 1 and any other 0. `result`
// may be one of the other arrays. [any thread]
void blend(double result[3], const double top[3], const double bottom[3], double opacity, int mode);

} // namespace velm::host
