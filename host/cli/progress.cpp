#include "host/cli/progress.h"

#include "host/base/one_line.h"
#include "host/cli/interrupt.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <iostream>
#include <unistd.h>

namespace velm::host {

namespace {

constexpr int kBarWidth = 40;
constexpr int kPercentStep = 10; // between the lines of a log

} // namespace

ProgressStyle progressStyle(const std::ostream &stream, bool quiet) {
    if (quiet) return ProgressStyle::none;
    return &stream == &std::cerr && isatty(STDERR_FILENO) != 0 ? ProgressStyle::bar : ProgressStyle::lines;
}

std::string durationText(double seconds) {
    const auto whole = static_cast<long long>(std::lround(seconds));
    constexpr long long kMinute = 60, kHour = 3600;
    if (whole < kHour) return fmt::format("{}:{:02}", whole / kMinute, whole % kMinute);
    return fmt::format("{}:{:02}:{:02}", whole / kHour, whole % kHour / kMinute, whole % kMinute);
}

ProgressReport::ProgressReport(std::ostream &stream, std::ostream &output, ProgressStyle style, TimeLimit limit)
    : stream_(stream), style_(style), limit_(limit) {
    if (style == ProgressStyle::percent) lines_.emplace(stream, "Progress: ", "%");
    if (style == ProgressStyle::openJd) lines_.emplace(output, "openjd_progress: ", "");
}

ProgressReport::~ProgressReport() {
    if (style_ == ProgressStyle::bar && shown_ >= 0) stream_ << kClearLine << std::flush;
}

void ProgressReport::begin(std::string title, const FramePosition &position) {
    title_ = onOneLine(title);
    position_ = position;
    start_ = Clock::now();
    shown_ = -1;
    if (style_ == ProgressStyle::bar) drawBar(0);
}

bool ProgressReport::progress(int done, int total) {
    const int percent = static_cast<int>(100LL * done / total);
    if (style_ == ProgressStyle::bar && percent != shown_) drawBar(percent);
    if (style_ == ProgressStyle::lines && percent / kPercentStep > std::max(shown_, 0) / kPercentStep) {
        stream_ << title_ << ": " << percent / kPercentStep * kPercentStep << " %\n" << std::flush;
        shown_ = percent;
    }
    if (lines_) { // of all frames
        const double frames = static_cast<double>(position_.index) + static_cast<double>(done) / total;
        lines_->show(static_cast<int>(100 * frames / static_cast<double>(position_.count)), Clock::now());
    }
    return !InterruptGuard::interrupted() && !limit_.isOver();
}

void ProgressReport::drawBar(int percent) {
    shown_ = percent;
    const auto filled = static_cast<std::size_t>(kBarWidth * percent / 100);
    std::string left;
    if (percent > 0) {
        const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
        left = "  " + durationText(seconds * (100 - percent) / percent) + " left";
    }
    stream_ << kClearLine
            << fmt::format("{}  [{}{}] {:3} %{}", title_, std::string(filled, '='),
                           std::string(kBarWidth - filled, ' '), percent, left)
            << std::flush;
}

void ProgressReport::note(const std::string &line) {
    if (style_ == ProgressStyle::bar && shown_ >= 0) {
        stream_ << kClearLine;
        shown_ = -1;
    }
    stream_ << onOneLine(line) << '\n' << std::flush;
}

void ProgressReport::end(const std::string &message) {
    if (style_ == ProgressStyle::none) return;
    if (style_ == ProgressStyle::bar) stream_ << kClearLine;
    stream_ << onOneLine(message) << '\n' << std::flush;
    shown_ = -1;
}

} // namespace velm::host
