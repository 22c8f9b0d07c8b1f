// A check, or a part of one, in a process of its own.
#pragma once

#include "host/check/process/check_record.h"
#include "host/guard/shared_record.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace velm::host {

using SharedCheckRecord = SharedRecord<CheckRecord>;

// How a child process ended.
struct ChildEnd {
    Outcome outcome;
    std::string message;
    std::string printed; // the end of its output, after a crash or a hang
};

// A forked process that runs some work, in a process group of its own and with its output captured. When the time limit
// is over, and at the end in any case, all processes that it has started are killed, whichever group they are in.
// [interface thread; other threads idle]
class Child {
  public:
    using Clock = std::chrono::steady_clock;

    // Starts the process. Its check record begins with the server names of `names`. MachineError if it cannot start.
    Child(const CheckRecord &names, const std::function<void()> &work, double limitSeconds);
    ~Child(); // kills the processes if `finish` was not called
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    int descriptor() const { return ended_; } // becomes readable when the process ends; owned by this object
    bool isOver() const { return Clock::now() >= deadline_; } // whether the time limit is over
    Clock::time_point deadline() const { return deadline_; }
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); } // since the start
    // Kills the processes, waits for the first one and returns how it ended. Call it once, after the process has ended
    // or the limit is over; a process that still runs counts as a hang.
    ChildEnd finish();
    const CheckRecord &record() const { return *copy_; } // a copy, made by `finish`; owned by this object

  private:
    [[noreturn]] void live(const std::function<void()> &work, int printed);
    ChildEnd endOf(bool ended, int status) const;
    std::string printedText() const;

    SharedCheckRecord record_;
    std::unique_ptr<CheckRecord> copy_;
    bool isIntact_ = true; // the record was in order when it was copied
    Clock::time_point start_, deadline_;
    double limit_;
    pid_t process_ = -1;
    int ended_ = -1, printed_ = -1;
};

// Waits until the child ends or its time limit is over, and finishes it.
ChildEnd waitFor(Child &child);

// The time limit, in seconds, of a second process that a check starts.
constexpr double kOtherProcessSeconds = 20;

// Runs a check and ends this process with the outcome: an exception counts as a failure, returning as a pass, or as a
// warning if there are warnings.
[[noreturn]] void runToTheEnd(const std::function<void()> &work);

} // namespace velm::host
