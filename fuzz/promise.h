// What a fuzz target demands of what it tries: a promise that is not kept ends the program, which is how the fuzzer,
// and a test, learn of it.
#pragma once

#include "host/base/error.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace velm::host::fuzz {

// Ends the program, saying which promise was broken, unless it was kept.
inline void demand(bool kept, const char *promise, std::string_view instead = {}) {
    if (kept) return;
    std::fprintf(stderr, "not kept: %s\n%s\n", promise, std::string(instead).c_str());
    std::abort();
}

// Reads something. False when it is refused, which has to be told with the place: `name` and what follows it.
template <class Work>
bool done(const std::string &name, Work work) {
    try {
        work();
        return true;
    } catch (const InputError &error) {
        demand(std::string_view(error.what()).starts_with(name), "errors start with the file", error.what());
        return false;
    }
}

inline std::string_view asText(const unsigned char *data, std::size_t size) {
    return {reinterpret_cast<const char *>(data), size};
}

} // namespace velm::host::fuzz

// One input; 0, since every input is worth keeping. The fuzzer and the test of known inputs call it.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size);
