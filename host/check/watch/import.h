// A function that a module imports from the system's libraries, and the one by which it is replaced.
#pragma once

#include <string_view>

namespace velm::host {

struct Import {
    std::string_view name; // in the module's import table
    void *function;        // called instead
};

template <class Function>
Import import(std::string_view name, Function *function) {
    return {name, reinterpret_cast<void *>(function)};
}

} // namespace velm::host
