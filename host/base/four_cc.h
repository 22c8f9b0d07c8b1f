// Four-character codes: the identifiers of blocks and chunks in binary files.
#pragma once

#include <cstdint>

namespace velm::host {

// "FORM" as a big-endian number: 0x464F524D.
constexpr std::uint32_t fourCC(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

} // namespace velm::host
