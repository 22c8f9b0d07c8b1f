// A stack for signal handlers: the usual one may be what ran out.
#pragma once

#include <csignal>

namespace velm::host {

// The calling thread's signal handlers run on a stack of its own, for as long as the scope lasts. Where there is no
// memory for one they go on as before.
class AlternateStack {
  public:
    AlternateStack();
    ~AlternateStack(); // on the same thread
    AlternateStack(const AlternateStack &) = delete;
    AlternateStack &operator=(const AlternateStack &) = delete;

  private:
    void *memory_;
    stack_t before_{};
};

} // namespace velm::host
