#include "host/base/one_line.h"

namespace velm::host {

namespace {

constexpr unsigned char kDelete = 0x7f;
constexpr unsigned char kLead = 0xc2, kFirstC1 = 0x80,
                        kLastC1 = 0x9f; // U+0080 to U+009F in UTF-8, which are control characters, too

std::string spelt(unsigned char byte) {
    constexpr const char *kDigits = "0123456789abcdef";
    switch (byte) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
}

} // namespace

std::string onOneLine(std::string_view text) {
    std::string line;
    unsigned char before = 0;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (before == kLead && byte >= kFirstC1 && byte <= kLastC1) {
            line.pop_back();
            line += spelt(before) + spelt(byte);
        } else if (byte < ' ' || byte == kDelete) {
            line += spelt(byte);
        } else {
            line += letter;
        }
        before = byte;
    }
    return line;
}

} // namespace velm::host
