// An integer hash for noise and sample points.
#pragma once

#include <cstdint>

namespace velm::host {

// A 32-bit finaliser of low bias (C. Wellons, "Prospecting for Hash Functions", 2018: lowbias32).
constexpr std::uint32_t scramble(std::uint32_t value) {
    value = (value ^ value >> 16) * 0x7feb352du;
    value = (value ^ value >> 15) * 0x846ca68bu;
    return value ^ value >> 16;
}

} // namespace velm::host
