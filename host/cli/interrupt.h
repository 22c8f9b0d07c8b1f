// Ctrl-C while rendering.
#pragma once

#include <csignal>

namespace velm::host {

// While one lives, the first SIGINT is only noted, so that the render can end in an orderly way; a second one ends the
// program at once. [interface thread; one at a time]
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard(); // puts back what was there before
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;

    // [any thread]
    static bool interrupted();

  private:
    struct sigaction before_ {};
};

} // namespace velm::host
