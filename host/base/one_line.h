// Texts from files and command lines, made fit for messages.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

// The text with its control characters as escape sequences, "\\n" and "\\x1b", so that a message stays on one line and
// no name in a file can control a terminal. All other bytes, valid UTF-8 or not, are unchanged. [any thread]
std::string onOneLine(std::string_view text);

} // namespace velm::host
