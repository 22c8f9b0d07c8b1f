// Texts from files and command lines, made fit for messages.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

// The text with its control characters as escape sequences, "\\n" and "\\x1b", so that a message stays on one line and
// no name in a file can control a terminal. All other bytes, valid UTF-8 or not, are unchanged. [any thread]
std::string onOneLine(std::string_view text);

// JSON with those control characters of its strings escaped, "\\u009b", that JSON allows and its writers leave as they
// are: U+007F to U+009F. It has to be valid UTF-8. [any thread]
std::string escapedJson(std::string_view json);

} // namespace velm::host
