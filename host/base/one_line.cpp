#include "host/base/one_line.h"

namespace velm::host {

namespace {

constexpr unsigned char kDelete = 0x7f;
constexpr unsigned char kLead = 0xc2, kFirstC1 = 0x80,
                        kLastC1 = 0x9f; // U+0080 to U+009F in UTF-8, which are control characters, too

constexpr const char *kDigits = "0123456789abcdef";

std::string spelt(unsigned char byte) {
    switch (byte) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
}

bool isSecondOfTwo(unsigned char before, unsigned char byte) {
    return before == kLead && byte >= kFirstC1 && byte <= kLastC1;
}

} // namespace

std::string onOneLine(std::string_view text) {
    std::string line;
    unsigned char before = 0;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        if (isSecondOfTwo(before, byte)) {
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

std::string escapedJson(std::string_view json) {
    std::string escaped;
    unsigned char before = 0;
    for (const char letter : json) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool isSecond = isSecondOfTwo(before, byte);
        if (isSecond) escaped.pop_back();
        if (isSecond || byte == kDelete)
            escaped += std::string("\\u00") + kDigits[byte >> 4] + kDigits[byte & 0xf]; // the code point, too
        else
            escaped += letter;
        before = byte;
    }
    return escaped;
}

} // namespace velm::host
