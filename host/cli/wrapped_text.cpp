#include "host/cli/wrapped_text.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace velm::host {

namespace {

constexpr std::size_t kLineWidth = 80;

} // namespace

void printWrapped(std::string_view text, std::size_t indent, std::ostream &out) {
    const std::string margin(indent, ' ');
    std::string line;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!line.empty() && indent + line.size() + 1 + word.size() > kLineWidth) {
            out << margin << line << '\n';
            line.clear();
        }
        if (!line.empty()) line += ' ';
        line += word;
    }
    if (!line.empty()) out << margin << line << '\n';
}

} // namespace velm::host
