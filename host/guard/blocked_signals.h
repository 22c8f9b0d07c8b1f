// The signals that a process waits for while other processes work for it.
#pragma once

#include <csignal>
#include <optional>

namespace velm::host {

// While it lives, SIGCHLD and the signals that end programs (SIGINT, SIGQUIT, SIGTERM, SIGHUP) are blocked in the
// calling thread, so that the process can wait for them. A signal that was ignored when it was made, as SIGHUP is under
// nohup, stays ignored. SIGCHLD gets its default effect, even if it was inherited as ignored: waitpid would give no
// status. [main thread; objects may nest]
class BlockedSignals {
  public:
    BlockedSignals();
    ~BlockedSignals();
    BlockedSignals(const BlockedSignals &) = delete;
    BlockedSignals &operator=(const BlockedSignals &) = delete;

    // Whether a signal is one of these.
    bool has(int signal) const { return sigismember(&blocked_, signal) == 1; }
    // The next of these signals; nothing if none arrives within so many seconds.
    std::optional<siginfo_t> next(double seconds) const;
    // A new descriptor, which the caller closes: readable while one of these signals is pending, which `next` then
    // returns. -1 if there is none to be had.
    int openDescriptor() const;
    // Ends this process by a signal, so that its parent sees the true cause.
    [[noreturn]] void dieOf(int signal) const;

    // In a process that was forked meanwhile: restores the signal mask from before the outermost of these objects. No
    // effect if there is none.
    static void unblockInForkedProcess();

  private:
    sigset_t blocked_{}, previous_{};
    const BlockedSignals *outer_;
};

} // namespace velm::host
