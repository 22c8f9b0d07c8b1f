#include "tests/platforms/hex_float.h"

#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace velm::plugin {
namespace {

constexpr int kFractionBits = 52, kFractionDigits = kFractionBits / 4, kBias = 1023, kMaxExponent = 2047;
constexpr uint64_t kSign = uint64_t{1} << 63, kFraction = (uint64_t{1} << kFractionBits) - 1;
constexpr char kDigits[] = "0123456789abcdef";

std::string fractionText(uint64_t fraction) {
    if (fraction == 0) return "";
    std::string text = ".";
    for (int shift = kFractionBits - 4; shift >= 0; shift -= 4) text += kDigits[fraction >> shift & 0xf];
    return text.substr(0, text.find_last_not_of('0') + 1);
}

// Converts the hexadecimal digits after the point to the bits of a fraction.
uint64_t readFraction(const std::string &digits) {
    uint64_t fraction = 0;
    for (size_t i = 0; i < kFractionDigits; ++i) {
        const size_t digit = i < digits.size() ? std::string(kDigits).find(digits[i]) : 0;
        if (digit == std::string::npos) throw std::invalid_argument("no hexadecimal digits: " + digits);
        fraction = fraction << 4 | digit;
    }
    return fraction;
}

// The position of a double in the ascending order of all doubles. 0 and -0 are at position 0.
int64_t position(double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    const auto magnitude = static_cast<int64_t>(bits & ~kSign);
    return bits & kSign ? -magnitude : magnitude;
}

} // namespace

std::string hexFloat(double value) {
    if (std::isnan(value)) return "nan";
    const auto bits = std::bit_cast<uint64_t>(value);
    const std::string sign = bits & kSign ? "-" : "";
    const int exponent = static_cast<int>(bits >> kFractionBits & kMaxExponent);
    const uint64_t fraction = bits & kFraction;
    if (exponent == kMaxExponent) return sign + "inf";
    if (exponent == 0 && fraction == 0) return sign + "0x0p+0";
    const int power = (exponent == 0 ? 1 : exponent) - kBias;
    return sign + (exponent == 0 ? "0x0" : "0x1") + fractionText(fraction) + "p" + (power < 0 ? "" : "+") +
           std::to_string(power);
}

double fromHexFloat(const std::string &text) {
    if (text == "nan") return std::numeric_limits<double>::quiet_NaN();
    const bool negative = text.starts_with('-');
    const std::string magnitude = text.substr(negative ? 1 : 0);
    const double sign = negative ? -1 : 1;
    if (magnitude == "inf") return sign * std::numeric_limits<double>::infinity();
    if (magnitude == "0x0p+0") return sign * 0.0;
    const size_t power = magnitude.find('p');
    const bool normal = magnitude.starts_with("0x1");
    if ((!normal && !magnitude.starts_with("0x0")) || power == std::string::npos)
        throw std::invalid_argument("no hexadecimal number: " + text);
    const uint64_t fraction = power > 4 ? readFraction(magnitude.substr(4, power - 4)) : 0;
    const auto exponent = static_cast<uint64_t>(normal ? std::stoi(magnitude.substr(power + 1)) + kBias : 0);
    return sign * std::bit_cast<double>(exponent << kFractionBits | fraction);
}

uint64_t unitsApart(double a, double b) {
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b) ? 0 : std::numeric_limits<uint64_t>::max();
    const int64_t from = position(a), to = position(b);
    return from < to ? static_cast<uint64_t>(to) - static_cast<uint64_t>(from)
                     : static_cast<uint64_t>(from) - static_cast<uint64_t>(to);
}

} // namespace velm::plugin
