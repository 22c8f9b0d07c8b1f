// Degrees, which files and people have, and radians, which functions have.
#pragma once

#include <numbers>

namespace velm::host {

constexpr double kDegreesPerRadian = 180 / std::numbers::pi, kRadiansPerDegree = std::numbers::pi / 180;

} // namespace velm::host
