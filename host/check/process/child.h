// A check in a process of its own.
#pragma once

#include "host/check/process/check_record.h"
#include "host/guard/shared_record.h"

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace velm::host {

using SharedBoard = SharedRecord<Blackboard>;

struct ChildEnd {
    Outcome outcome;
    std::string message, printed;
};

// Runs `work` in a process group of its own, which has the server names of `names` on its blackboard, its own address
// layout, and nobody to write to. The group is killed when the limit is over, and at the end in any case.
class Child {
  public:
    using Clock = std::chrono::steady_clock;

    Child(const Blackboard &names, const std::function<void()> &work, double limitSeconds); // MachineError
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    // Readable at the child's end.
    int descriptor() const { return pipe_; }
    bool isOver() const { return Clock::now() >= deadline_; }
    Clock::time_point deadline() const { return deadline_; }
    double seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    Blackboard &board() const { return *board_; }
    // To be called once, after the end or the limit: makes sure of the end, and tells what became of it.
    ChildEnd finish();

  private:
    [[noreturn]] void live(const std::function<void()> &work, int printed);
    std::string printedText() const;

    SharedBoard board_;
    Clock::time_point start_, deadline_;
    double limit_;
    pid_t process_ = -1;
    int pipe_ = -1, printed_ = -1;
};

// Waits until the child ends or its time is over.
ChildEnd waitFor(Child &child);

// How long another process may take that a check asks for something.
constexpr double kOtherProcessSeconds = 20;

// Runs a check as a process does that runs nothing else: what it throws is a failure, and returning is passing.
[[noreturn]] void runToTheEnd(const std::function<void()> &work);

} // namespace velm::host
