#include "host/io/base64.h"

#include <cstdint>

namespace velm::host {

namespace {

int valueOfBase64(char digit) {
    if (digit >= 'A' && digit <= 'Z') return digit - 'A';
    if (digit >= 'a' && digit <= 'z') return digit - 'a' + 26;
    if (digit >= '0' && digit <= '9') return digit - '0' + 52;
    if (digit == '+') return 62;
    return digit == '/' ? 63 : -1;
}

} // namespace

std::string bytesOfBase64(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char digit : text) {
        const int value = valueOfBase64(digit);
        if (value < 0) break;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xff);
    }
    return bytes;
}

} // namespace velm::host
