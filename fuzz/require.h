// What fuzz targets share: requirements on the code under test. A requirement that is not met ends the program, which
// is how the fuzzer, and the regression tests, notice it.
#pragma once

#include "host/base/error.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace velm::host::fuzz {

// Ends the program with a message unless the requirement is met. `found` is what was found instead.
inline void require(bool isMet, const char *requirement, std::string_view found = {}) {
    if (isMet) return;
    std::fprintf(stderr, "not met: %s\n%s\n", requirement, std::string(found).c_str());
    std::abort();
}

// Does some work that may refuse its input by an InputError, whose message has to start with the file's name. Returns
// false if it does.
template <class Work>
bool acceptsInput(const std::string &name, Work work) {
    try {
        work();
        return true;
    } catch (const InputError &error) {
        require(std::string_view(error.what()).starts_with(name), "errors start with the file's name", error.what());
        return false;
    }
}

inline std::string_view asText(const unsigned char *data, std::size_t size) {
    return {reinterpret_cast<const char *>(data), size};
}

} // namespace velm::host::fuzz

// Tries one input; called by the fuzzer and by the regression tests. Always returns 0: the fuzzer may keep every input.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size);
