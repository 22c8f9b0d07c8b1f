// Running text on a terminal.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string_view>

namespace velm::host {

// Prints a text in lines of at most 80 characters, each of which begins with `indent` blanks. Lines break at blanks; a
// word that is longer than a line keeps a line to itself. An empty text prints nothing. Counts bytes as characters.
void printWrapped(std::string_view text, std::size_t indent, std::ostream &out);

} // namespace velm::host
