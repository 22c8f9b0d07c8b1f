#include "host/cli/percent_lines.h"

#include <ostream>

namespace velm::host {

void PercentLines::show(int percent, Clock::time_point now) {
    constexpr int kAll = 100;
    constexpr std::chrono::seconds kPause{1};
    if (percent <= shown_ || (shown_ >= 0 && percent < kAll && now - shownAt_ < kPause)) return;
    shown_ = percent;
    shownAt_ = now;
    stream_ << before_ << percent << after_ << '\n' << std::flush;
}

} // namespace velm::host
