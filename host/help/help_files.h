// The help texts as they were when the program was built.
#pragma once

#include <span>
#include <string_view>

namespace velm::host {

struct HelpFile {
    std::string_view name; // "velm_sqrt.json"
    std::string_view text;
};

// The files of docs/nodes, by name. The texts live as long as the program. [any thread]
std::span<const HelpFile> helpFiles();

} // namespace velm::host
