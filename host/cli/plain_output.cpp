#include "host/cli/plain_output.h"

#include "host/base/one_line.h"

#include <cstddef>
#include <string_view>

namespace velm::host {

PlainOutput::Buffer::int_type PlainOutput::Buffer::overflow(int_type letter) {
    if (traits_type::eq_int_type(letter, traits_type::eof())) return traits_type::not_eof(letter);
    const char one = traits_type::to_char_type(letter);
    return xsputn(&one, 1) == 1 ? letter : traits_type::eof();
}

std::streamsize PlainOutput::Buffer::xsputn(const char *letters, std::streamsize count) {
    const std::string_view text(letters, static_cast<std::size_t>(count));
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        to_ << onOneLine(text.substr(at, end - at));
        if (end == std::string_view::npos) break;
        to_ << '\n';
        at = end + 1;
    }
    return to_ ? count : 0;
}

int PlainOutput::Buffer::sync() { return to_.flush() ? 0 : -1; }

} // namespace velm::host
