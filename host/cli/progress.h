// Reports the progress of a render.
#pragma once

#include "host/cli/percent_lines.h"
#include "host/cli/time_limit.h"
#include "host/render/renderer.h"

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>

namespace velm::host {

enum class ProgressStyle {
    none,
    lines,   // a line for every tenth of a frame, for logs
    bar,     // a line that is redrawn, for terminals
    percent, // "Progress: 42%", for job schedulers
    openJd   // "openjd_progress: 42" on standard output, for those that run Open Job Description templates
};

// The style for a stream: a bar if it is the standard error of the process and a terminal, else lines.
ProgressStyle progressStyle(const std::ostream &stream, bool quiet);

// Clears the line of a terminal that shows a bar.
constexpr const char *kClearLine = "\r\033[K";

// Where a frame is among those that a command renders.
struct FramePosition {
    std::size_t index = 0, count = 1;
};

// Shows the progress of frames one after another, and stops a render that was interrupted or whose time is up.
class ProgressReport : public ProgressSink {
  public:
    // Messages go to `stream`, and so does progress, except that of the style openJd, which goes to `output`.
    ProgressReport(std::ostream &stream, ProgressStyle style) : ProgressReport(stream, stream, style, {}) {}
    ProgressReport(std::ostream &stream, std::ostream &output, ProgressStyle style, TimeLimit limit);
    ~ProgressReport() override; // clears a bar that an error left on the terminal
    ProgressReport(const ProgressReport &) = delete;
    ProgressReport &operator=(const ProgressReport &) = delete;

    // A frame starts; `title` names it, as in "frame 3 (1 of 10)".
    void begin(std::string title, const FramePosition &position = {});
    // `done` of `total` tiles of it are finished; false after an interrupt, and when the time is up.
    bool progress(int done, int total) override;
    bool isTimeUp() const { return limit_.isOver(); }
    // Prints a line whatever the style. It replaces a bar; the next progress draws the bar again.
    void note(const std::string &line);
    // The frame has ended; prints the message, unless the style is none.
    void end(const std::string &message);

  private:
    using Clock = std::chrono::steady_clock;
    void drawBar(int percent);

    std::ostream &stream_;
    ProgressStyle style_;
    std::optional<PercentLines> lines_; // of the styles for job schedulers
    TimeLimit limit_;
    std::string title_;
    FramePosition position_;
    Clock::time_point start_;
    int shown_ = -1; // the percentage shown last; -1: none yet
};

// "1:05" or "1:00:05". Exposed for tests.
std::string durationText(double seconds);

} // namespace velm::host
