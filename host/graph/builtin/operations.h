// What Scalar Math and Vector Math have in common: the popup of their operations, and results that are always numbers.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace velm::host::builtin {

// The texts of a popup, which ends with null, from a table of operations.
template <class Operation, std::size_t count>
constexpr std::array<const char *, count + 1> operationTexts(const Operation (&operations)[count]) {
    std::array<const char *, count + 1> texts{};
    for (std::size_t i = 0; i < count; ++i) texts[i] = operations[i].text;
    return texts;
}

// A result; 0 where it is not defined or too large for a double.
inline double definedOrZero(double result) { return std::isfinite(result) ? result : 0; }

} // namespace velm::host::builtin
