// Reads symbol and library names from the file of a shared object without loading it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host {

struct ElfSymbols {
    std::vector<std::string> exported; // functions and objects
    std::vector<std::string> needed;   // libraries: "libm.so.6"
};

// The variable that contains an address, given relative to the beginning of the loaded file: "velm::plugin::mti". Empty
// if the file has no such symbol, as when its symbols are stripped. `file` as below; InputError if it is truncated.
std::string variableAt(const std::string &file, std::uintptr_t address);

// `file` has to be a shared object that this machine can load. InputError if it exports nothing or is truncated.
ElfSymbols readSymbols(const std::string &file);

} // namespace velm::host
