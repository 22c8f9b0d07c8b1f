// Reads symbol and library names from the file of a shared object without loading it.
#pragma once

#include <string>
#include <vector>

namespace velm::host {

struct ElfSymbols {
    std::vector<std::string> exported; // functions and objects
    std::vector<std::string> needed;   // libraries: "libm.so.6"
};

// `file` has to be a shared object that this machine can load. InputError if it exports nothing or is truncated.
ElfSymbols readSymbols(const std::string &file);

} // namespace velm::host
