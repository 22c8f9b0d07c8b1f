// Numbers in hexadecimal, for messages.
#pragma once

#include <cstdio>
#include <string>

namespace velm::host {

// "0x8001", with capital digits.
inline std::string hex(unsigned long long number) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", number);
    return text;
}

} // namespace velm::host
