// Finds out which of its global variables a module writes to, from its machine code: the variables are write-protected,
// and each instruction that writes to one is let through by itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace velm::host {

constexpr std::size_t kMostGlobalWrites = 20000;

// Null if this program can follow writes; else the reason why not.
const char *whyWritesAreUnknown();

// Runs `work` on the calling thread, and returns to which global and static variables of the module that contains the
// address `inside` it has written: the addresses of the first byte of each write, relative to the module's beginning as
// in its symbol table, in ascending order, each once. Left out are writes while the thread holds a lock (locks.h),
// instructions that are atomic in themselves, thread-local variables, and whatever follows the first kMostGlobalWrites
// addresses. An atomic variable that is written by a plain store cannot be told from a variable that is none. While
// `work` runs, system calls that write to such a variable fail. No other thread may run code of the module, and
// whyWritesAreUnknown() has to be null. [one thread at a time]
std::vector<std::uintptr_t> globalWritesOf(const void *inside, const std::function<void()> &work);

} // namespace velm::host
