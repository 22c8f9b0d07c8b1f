// Texts from files and command lines, within lines for people.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

// The text with its control characters spelt out, "\\n" and "\\x1b": a message stays one line, and no name in a file
// gives orders to a terminal. All else, UTF-8 or not, stays as it is. [any thread]
std::string onOneLine(std::string_view text);

} // namespace velm::host
