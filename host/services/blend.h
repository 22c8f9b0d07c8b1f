// Laying one colour over another.
#pragma once

namespace velm::host {

// result = bottom + opacity (blended - bottom), with the blended colour as the mode has it (kBlendNormal and so on; a
// mode that is none counts as normal). Colours and opacity are not clamped. Where a formula would divide by nothing or
// less, its limit from within 0 to 1 stands: dodging by a full or brighter top leaves black black and makes the rest at
// least full; burning by a black or darker top leaves what is full or brighter full and makes the rest black. `result`
// may be one of the others. [any thread]
void blend(double result[3], const double top[3], const double bottom[3], double opacity, int mode);

} // namespace velm::host
