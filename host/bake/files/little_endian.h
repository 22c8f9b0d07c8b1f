// Numbers in the bytes of files, the lowest byte first.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <string>

namespace velm::host {

// The bytes of a number of a fixed size.
template <class Number>
std::string littleEndianBytes(Number number) {
    auto raw = std::bit_cast<std::array<char, sizeof number>>(number);
    if constexpr (std::endian::native != std::endian::little) std::ranges::reverse(raw);
    return {raw.begin(), raw.end()};
}

} // namespace velm::host
