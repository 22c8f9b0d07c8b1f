// The cells of checkerboards.
#pragma once

#include <cmath>

namespace velm::host::builtin {

// The number of the cell at a coordinate, which is measured in cells. Surfaces often lie exactly on the boundary of
// cells, where rounding errors would speckle them. The cells are therefore shifted by a small fraction of their size.
inline double cellAt(double coordinate) {
    constexpr double kShift = 1e-4;
    return std::floor(coordinate + kShift);
}

// Cells whose numbers have an odd sum have the second colour.
inline bool isOdd(double sum) { return std::fabs(std::fmod(sum, 2)) == 1; }

} // namespace velm::host::builtin
