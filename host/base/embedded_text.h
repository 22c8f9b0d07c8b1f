// A text file that is built into the program; see cmake/embed_texts.cmake.
#pragma once

#include <string_view>

namespace velm::host {

struct EmbeddedText {
    std::string_view name; // of the file, without its directory: "velm_sqrt.json"
    std::string_view text; // as it was when the program was built
};

} // namespace velm::host
