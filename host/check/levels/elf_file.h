// The names in a shared object's file, without loading it.
#pragma once

#include <string>
#include <vector>

namespace velm::host {

struct ElfSymbols {
    std::vector<std::string> shown;  // that others can bind to
    std::vector<std::string> needed; // libraries, as "libm.so.6"
};

// The file is a whole shared object for this machine, as loading it has shown. InputError when it has no sections.
ElfSymbols readSymbols(const std::string &file);

} // namespace velm::host
