#include "host/guard/alternate_stack.h"

#include <sys/mman.h>

#include <cstddef>

namespace velm::host {

namespace {

constexpr std::size_t kSize = std::size_t{256} * 1024; // unwinding needs room, most of all under the sanitizers

} // namespace

AlternateStack::AlternateStack()
    : memory_(mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    if (memory_ == MAP_FAILED) return;
    stack_t alternate{};
    alternate.ss_sp = memory_;
    alternate.ss_size = kSize;
    sigaltstack(&alternate, &previous_);
}

AlternateStack::~AlternateStack() {
    if (memory_ == MAP_FAILED) return;
    sigaltstack(&previous_, nullptr);
    munmap(memory_, kSize);
}

} // namespace velm::host
