// The log of a run: a file to which a line is appended for each event.
#pragma once

#include <string>
#include <utility>

namespace velm::host {

enum class LogLevel { info, warning, error };

// Several processes may write to one file: each line is appended by a single write. A line has the time (UTC), the
// level, the memory that the process has in use, and the message:
//
//     2026-11-22T07:39:36.123Z  info        51.2 MiB  frame 3: out/walk_0003.exr written in 12.305 s
//
// [any thread]
class LogFile {
  public:
    // Without a name, there is no log, and neither function does anything.
    explicit LogFile(std::string file) : file_(std::move(file)) {}

    // Creates the file if it does not exist. UsageError for a file that is not a log, such as a scene by mistake, and
    // MachineError, with the system's reason, if it cannot be appended to.
    void prepare() const;

    // Control characters in the message are written as escape sequences. Does nothing to a file that is not a log. A
    // failure is ignored: a full disk under the log is no reason to lose a picture.
    void add(LogLevel level, const std::string &message) const;

  private:
    std::string file_;
};

} // namespace velm::host
