// Reports the progress of a render.
#pragma once

#include "host/render/renderer.h"

#include <chrono>
#include <iosfwd>
#include <string>

namespace velm::host {

enum class ProgressStyle {
    none,
    lines, // a line for every tenth of a frame, for logs
    bar    // a line that is redrawn, for terminals
};

// The style for a stream: a bar if it is the standard error of the process and a terminal, else lines.
ProgressStyle progressStyle(const std::ostream &stream, bool quiet);

// Clears the line of a terminal that shows a bar.
constexpr const char *kClearLine = "\r\033[K";

// Shows the progress of frames one after another, and stops a render that was interrupted.
class ProgressReport : public ProgressSink {
  public:
    ProgressReport(std::ostream &stream, ProgressStyle style) : stream_(stream), style_(style) {}
    ~ProgressReport() override; // clears a bar that an error left on the terminal
    ProgressReport(const ProgressReport &) = delete;
    ProgressReport &operator=(const ProgressReport &) = delete;

    // A frame starts; `title` names it, as in "frame 3 (1 of 10)".
    void begin(std::string title);
    // `done` of `total` tiles of it are finished; false after an interrupt.
    bool progress(int done, int total) override;
    // Prints a line whatever the style. It replaces a bar; the next progress draws the bar again.
    void note(const std::string &line);
    // The frame has ended; prints the message, unless the style is none.
    void end(const std::string &message);

  private:
    using Clock = std::chrono::steady_clock;
    void drawBar(int percent);

    std::ostream &stream_;
    ProgressStyle style_;
    std::string title_;
    Clock::time_point start_;
    int shown_ = -1; // the percentage shown last; -1: none yet
};

// "1:05" or "1:00:05". Exposed for tests.
std::string durationText(double seconds);

} // namespace velm::host
