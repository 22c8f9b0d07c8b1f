// Numbers with as few digits as say the same.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host {

// Files hold most numbers as float, and panels show them multiplied with a factor. The decimal number with the fewest
// digits that becomes, divided by the factor, the same float as `shown` does: 33.3 for the 33.300000664 degrees that a
// file makes of it. `shown` itself when it is not finite.
double shortest(double shown, double factor);

// The same for all numbers of a setting; the times of keys, and what shapes them, have no unit.
SettingValue shortest(SettingValue value, double factor);

} // namespace velm::host
