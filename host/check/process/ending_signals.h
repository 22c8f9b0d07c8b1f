// Signals that end a run of checks.
#pragma once

#include "host/guard/blocked_signals.h"

#include <poll.h>

#include <chrono>
#include <vector>

namespace velm::host {

// Thrown when a signal has arrived that is to end the program, so that everything is cleared up first.
struct EndingSignal {
    int number;
};

// While it lives, waits for descriptors and for those signals at once. [main thread]
class EndingSignals {
  public:
    EndingSignals(); // MachineError if the system refuses
    ~EndingSignals();
    EndingSignals(const EndingSignals &) = delete;
    EndingSignals &operator=(const EndingSignals &) = delete;

    // Waits until one of the descriptors has an event, as poll does, or the deadline is over, or a child process has
    // ended. EndingSignal if a signal arrives.
    void wait(std::vector<pollfd> &descriptors, std::chrono::steady_clock::time_point deadline) const;
    // Ends this process by the signal.
    [[noreturn]] void dieOf(const EndingSignal &ending) const { signals_.dieOf(ending.number); }

  private:
    BlockedSignals signals_;
    int descriptor_;
};

} // namespace velm::host
