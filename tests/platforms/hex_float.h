// Doubles as hexadecimal text. They are not formatted by the C library, since those of the platforms differ.
#pragma once

#include <cstdint>
#include <string>

namespace velm::plugin {

// Formats a number as in "0x1.8p+1", "-0x0p+0" or "inf". Every NaN is "nan", since processors differ in its sign and
// payload.
std::string hexFloat(double value);

// Parses the result of hexFloat. Throws std::invalid_argument for any other text.
double fromHexFloat(const std::string &text);

// The distance of two doubles in units in the last place: how many steps lead from one to the other if each step goes
// to the next double. 0 for two NaNs; the largest uint64_t for a NaN and a number.
uint64_t unitsApart(double a, double b);

} // namespace velm::plugin
