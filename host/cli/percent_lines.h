// Progress as lines with a whole per cent, for programs that read it.
#pragma once

#include <chrono>
#include <iosfwd>

namespace velm::host {

class PercentLines {
  public:
    using Clock = std::chrono::steady_clock;

    // A line is `before`, the number, `after`. The stream must outlive the object.
    PercentLines(std::ostream &stream, const char *before, const char *after)
        : stream_(stream), before_(before), after_(after) {}

    // Prints a line if the number is higher than the last one and a second has passed since then. The line for 100 does
    // not wait. `now` does not go back.
    void show(int percent, Clock::time_point now);

  private:
    std::ostream &stream_;
    const char *before_, *after_;
    int shown_ = -1; // -1: none yet
    Clock::time_point shownAt_;
};

} // namespace velm::host
