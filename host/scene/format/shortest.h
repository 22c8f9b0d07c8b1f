// Numbers with as few digits as possible.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host {

// Object files hold most numbers as float, and panels show them multiplied by a factor. Gives the decimal number with
// the fewest digits that, divided by the factor, becomes the same float as `shown` does: 33.3 for 33.300000664 degrees.
// Gives `shown` itself when it is not finite.
double shortest(double shown, double factor);

// The same for all numbers of a setting. The factor does not apply to the times of keys, nor to their tension,
// continuity and bias.
SettingValue shortest(SettingValue value, double factor);

} // namespace velm::host
