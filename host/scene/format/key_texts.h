// The words of scene files for the shapes of keys and for the behaviours outside the keys, in the order of the codes.
#pragma once

#include "module/host.h"

namespace velm::host {

inline constexpr const char *kShapeTexts[] = {"tcb", "hermite", "bezier", "linear", "stepped", "bezier2"};
static_assert(kShapeTcb == 0 && kShapeHermite == 1 && kShapeBezier1 == 2 && kShapeLinear == 3 && kShapeStepped == 4 &&
              kShapeBezier2 == 5);

inline constexpr const char *kBehaviourTexts[] = {"reset", "constant", "repeat", "oscillate", "offsetRepeat", "linear"};
static_assert(kBehaveReset == 0 && kBehaveConstant == 1 && kBehaveRepeat == 2 && kBehaveOscillate == 3 &&
              kBehaveOffsetRepeat == 4 && kBehaveLinear == 5);

} // namespace velm::host
