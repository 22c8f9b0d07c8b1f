// A separate stack for signal handlers, which also run when the thread's own stack has overflowed.
#pragma once

#include <csignal>

namespace velm::host {

// While it lives, the calling thread's signal handlers (those installed with SA_ONSTACK) run on a stack that it
// allocates. Has no effect if there is no memory for the stack.
class AlternateStack {
  public:
    AlternateStack();
    ~AlternateStack(); // must run on the thread that called the constructor
    AlternateStack(const AlternateStack &) = delete;
    AlternateStack &operator=(const AlternateStack &) = delete;

  private:
    void *memory_;
    stack_t previous_{};
};

} // namespace velm::host
