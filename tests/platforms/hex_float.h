// Doubles as hexadecimal text, written and read by hand: the C libraries of the platforms do not write them alike.
#pragma once

#include <cstdint>
#include <string>

namespace velm::plugin {

// "0x1.8p+1", "-0x0p+0", "inf", "nan" (of any sign and payload: processors differ there).
std::string hexFloat(double value);

// What hexFloat wrote. Throws std::invalid_argument for anything else.
double fromHexFloat(const std::string &text);

// How many doubles further the one is than the other; 0 for two NaNs, and the most there is for a NaN and a number.
uint64_t unitsApart(double a, double b);

} // namespace velm::plugin
