// Telling people how far a render is.
#pragma once

#include "host/render/renderer.h"

#include <chrono>
#include <iosfwd>
#include <string>

namespace velm::host {

enum class ProgressStyle {
    none,
    lines, // a line for every tenth of a frame, for logs
    bar    // one line that is drawn over and over, for terminals
};

// The style that suits a stream: a bar when it is the process's standard error and that is a terminal.
ProgressStyle progressStyle(const std::ostream &stream, bool quiet);

// Takes a bar away that is standing on a terminal.
constexpr const char *kClearLine = "\r\033[K";

// Shows the progress of frames one after another, and stops a render that was interrupted.
class ProgressReport : public ProgressSink {
  public:
    ProgressReport(std::ostream &stream, ProgressStyle style) : stream_(stream), style_(style) {}
    ~ProgressReport() override; // takes away a bar that an error left standing
    ProgressReport(const ProgressReport &) = delete;
    ProgressReport &operator=(const ProgressReport &) = delete;

    // A frame starts; `title` names it, as in "frame 3 (1 of 10)".
    void begin(std::string title);
    // Tiles of it are done; false when an interrupt was noted.
    bool progress(int done, int total) override;
    // A line that is told whatever the style, in the place of a bar; the next progress draws the bar anew.
    void note(const std::string &line);
    // The frame has ended; leaves a line that says so, unless the style is none.
    void end(const std::string &message);

  private:
    using Clock = std::chrono::steady_clock;
    void drawBar(int percent);

    std::ostream &stream_;
    ProgressStyle style_;
    std::string title_;
    Clock::time_point start_;
    int shown_ = -1; // per cent last shown; -1: none
};

// "1:05" or "1:00:05". Exposed for tests.
std::string durationText(double seconds);

} // namespace velm::host
