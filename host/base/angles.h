// Conversion factors between degrees, as in files and on panels, and radians, as in functions.
#pragma once

#include <numbers>

namespace velm::host {

constexpr double kDegreesPerRadian = 180 / std::numbers::pi, kRadiansPerDegree = std::numbers::pi / 180;

} // namespace velm::host
