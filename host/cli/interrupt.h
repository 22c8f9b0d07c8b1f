// Ctrl-C while rendering.
#pragma once

#include <csignal>

namespace velm::host {

// While an InterruptGuard exists, the first SIGINT only sets a flag, so that the render can end in an orderly way; a
// second one ends the program at once. A SIGINT that is ignored, as in a shell's background job, stays ignored.
// [interface thread; one at a time]
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard(); // restores the previous signal handler
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;

    // [any thread]
    static bool interrupted();

  private:
    struct sigaction before_ {};
};

} // namespace velm::host
