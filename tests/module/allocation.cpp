#include "tests/module/allocation.h"

#include <cstddef>

namespace velm::plugin {
namespace {

bool failing = false;
LastAllocation last{};

} // namespace

void failNextAllocation() { failing = true; }
LastAllocation lastAllocation() { return last; }

extern "C" {

void *__real_calloc(size_t count, size_t size);
void __real_free(void *memory);
void *__wrap_calloc(size_t count, size_t size);
void __wrap_free(void *memory);

void *__wrap_calloc(size_t count, size_t size) {
    if (failing) {
        failing = false;
        return nullptr;
    }
    last = {.memory = __real_calloc(count, size), .freed = false};
    return last.memory;
}

void __wrap_free(void *memory) {
    if (memory == last.memory) last.freed = true;
    __real_free(memory);
}

} // extern "C"

} // namespace velm::plugin
