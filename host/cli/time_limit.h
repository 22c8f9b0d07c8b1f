// How long a render may take.
#pragma once

#include <chrono>

namespace velm::host {

class TimeLimit {
  public:
    TimeLimit() = default; // none
    // From now on. 0 seconds: no limit.
    explicit TimeLimit(double seconds) : seconds_(seconds) {}

    double seconds() const { return seconds_; }
    // [any thread]
    bool isOver() const {
        return seconds_ > 0 && std::chrono::duration<double>(Clock::now() - start_).count() > seconds_;
    }

  private:
    using Clock = std::chrono::steady_clock;
    double seconds_ = 0;
    Clock::time_point start_ = Clock::now();
};

} // namespace velm::host
