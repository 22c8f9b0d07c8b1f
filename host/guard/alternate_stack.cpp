#include "host/guard/alternate_stack.h"

#include <sys/mman.h>

#include <cstddef>

namespace velm::host {

namespace {

constexpr std::size_t kSize = 256 * 1024; // going through a stack takes some room, under the sanitizers above all

} // namespace

AlternateStack::AlternateStack()
    : memory_(mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    if (memory_ == MAP_FAILED) return;
    stack_t own{};
    own.ss_sp = memory_;
    own.ss_size = kSize;
    sigaltstack(&own, &before_);
}

AlternateStack::~AlternateStack() {
    if (memory_ == MAP_FAILED) return;
    sigaltstack(&before_, nullptr);
    munmap(memory_, kSize);
}

} // namespace velm::host
