#include "host/guard/guarded.h"

#include "host/base/error.h"
#include "host/guard/call_record.h"
#include "host/guard/crash_handler.h"
#include "host/guard/crash_text.h"
#include "host/guard/shared_record.h"

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <optional>

namespace velm::host {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double kLongestTick = 1, kShortestTick = 0.01; // seconds between two checks for progress
constexpr double kTicksInALimit = 10;
constexpr double kAnswerTime = 1; // seconds that threads have to answer where they are
constexpr double kCrashTime = 10; // seconds that a process that crashed has to end

// Blocks the signals that the guarding process handles, so that it can wait for them, until it is destroyed.
class BlockedSignals {
  public:
    BlockedSignals() {
        sigemptyset(&blocked_);
        for (const int signal : {SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP}) sigaddset(&blocked_, signal);
        sigprocmask(SIG_BLOCK, &blocked_, &previous_);
        std::signal(SIGCHLD, SIG_DFL); // if it was inherited as ignored, waitpid would give no status
    }
    ~BlockedSignals() { unblock(); }
    BlockedSignals(const BlockedSignals &) = delete;
    BlockedSignals &operator=(const BlockedSignals &) = delete;

    // Restores the signal mask of the time before, in this process or in one forked from it.
    void unblock() const { sigprocmask(SIG_SETMASK, &previous_, nullptr); }
    // Waits for the next of these signals; nothing if none arrives within that time.
    std::optional<siginfo_t> next(double seconds) const {
        siginfo_t info{};
        const double whole = std::floor(seconds);
        const timespec limit{.tv_sec = static_cast<time_t>(whole),
                             .tv_nsec = static_cast<long>((seconds - whole) * 1e9)};
        if (sigtimedwait(&blocked_, &info, &limit) < 0) return std::nullopt;
        return info;
    }

  private:
    sigset_t blocked_{}, previous_{};
};

// A terminal's signals come from the kernel, and reach every process of the foreground group by themselves.
bool isFromTerminal(const siginfo_t &info) { return info.si_code == SI_KERNEL; }

class Guard {
  public:
    Guard(const std::string &module, const GuardOptions &options) : limit_(options.callLimit) {
        std::snprintf(record_->module, kLongestPath, "%s", module.c_str());
        const double tick = limit_ > 0 ? limit_ / kTicksInALimit : kLongestTick;
        tick_ = std::clamp(tick, kShortestTick, kLongestTick);
    }

    int run(const std::function<int()> &work) {
        const pid_t guard = getpid();
        std::fflush(nullptr); // or both processes would write what is buffered
        process_ = fork();
        if (process_ < 0) throw MachineError("cannot start a process: " + std::string(std::strerror(errno)));
        if (process_ == 0) runWork(guard, work);
        while (!ended_) {
            const auto info = signals_.next(tick_);
            if (info) handle(*info);
            checkProgress();
        }
        return result();
    }

  private:
    // The other process. It ends with _exit, without static destructors and exit handlers: a library that had threads
    // before the fork might wait in them for threads that do not exist in this process.
    [[noreturn]] void runWork(pid_t guard, const std::function<int()> &work) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != guard) _exit(kCrashedStatus); // the guarding process ended before the call above
        signals_.unblock();
        useCallRecord(&*record_);
        installCrashHandlers();
        const int status = work();
        std::fflush(nullptr);
        record_->finished.store(status + 1);
        _exit(status);
    }

    void handle(const siginfo_t &info) {
        switch (info.si_signo) {
        case SIGCHLD: ended_ = waitpid(process_, &status_, WNOHANG) == process_; break;
        case SIGINT:
        case SIGQUIT:
            if (!isFromTerminal(info)) kill(process_, info.si_signo);
            break;
        default: // the other process would not remove its unfinished file
            end();
            dieOf(info.si_signo);
        }
    }

    // Adds up the time without progress in a call, and acts when it exceeds a limit. One check adds two ticks at most,
    // so that time does not count in which this process was stopped or the machine was suspended.
    void checkProgress() {
        const auto now = Clock::now();
        const double passed = std::min(Seconds(now - lastCheck_).count(), 2 * tick_);
        lastCheck_ = now;
        std::uint64_t steps = 0;
        bool isBusy = false;
        for (const CallSlot &slot : record_->slots) {
            steps += slot.steps.load(std::memory_order_relaxed);
            isBusy = isBusy || slot.call.load(std::memory_order_relaxed) || slot.thread.load() != 0;
        }
        const bool isCrashing = record_->crash.thread.load() != 0;
        idleTime_ = (isBusy || isCrashing) && steps == steps_ ? idleTime_ + passed : 0;
        steps_ = steps;
        if (isCrashing && idleTime_ > kCrashTime) end();
        if (!isCrashing && limit_ > 0 && idleTime_ > limit_ && !ended_) handleHang();
    }

    void handleHang() {
        idleTime_ = 0;
        if (!record_->slots[0].call.load()) askThreads();
        if (ended_) return;
        const std::string hang = hangText(*record_);
        if (hang.empty()) return; // the host's own work has no limit
        end();
        char limit[32];
        std::snprintf(limit, sizeof limit, "%g", limit_);
        throw ModuleError(hang + ": no progress for " + limit + " s");
    }

    // Asks each render thread for its call site, and waits until all have answered or kAnswerTime has passed.
    void askThreads() {
        for (CallSlot &slot : record_->slots) {
            slot.answered.store(false);
            const int thread = slot.thread.load();
            if (thread != 0) syscall(SYS_tgkill, slot.process.load(), thread, callSiteSignal());
        }
        const auto isUnanswered = [](const CallSlot &slot) { return slot.thread.load() != 0 && !slot.answered.load(); };
        const auto deadline = Clock::now() + Seconds(kAnswerTime);
        while (Clock::now() < deadline && std::ranges::any_of(record_->slots, isUnanswered))
            if (const auto info = signals_.next(kShortestTick)) handle(*info);
    }

    // Kills the other process if it still runs, and removes its unfinished file.
    void end() {
        if (!ended_) {
            kill(process_, SIGKILL);
            while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
            }
        }
        ended_ = true;
        cleanUp();
    }

    void cleanUp() const {
        if (record_->unfinished[0] != '\0') unlink(record_->unfinished);
    }

    // Ends this process by the signal, so that its parent sees the true cause.
    [[noreturn]] void dieOf(int signal) const {
        std::signal(signal, SIG_DFL);
        raise(signal);
        signals_.unblock();
        _exit(128 + signal); // the signal was ignored or blocked before it was handled here
    }

    // The status of the work, once the other process has ended; an exception if it ended otherwise.
    int result() {
        cleanUp();
        const int finished = record_->finished.load();
        if (WIFEXITED(status_) && finished != 0) return finished - 1;
        const std::optional<CrashText> crash = crashText(*record_, status_);
        if (!crash) dieOf(WTERMSIG(status_));
        if (crash->isOfModule) throw ModuleError(crash->text);
        throw MachineError(crash->text);
    }

    const BlockedSignals signals_;
    const SharedRecord<CallRecord> record_;
    const double limit_; // seconds; 0: none
    double tick_;        // seconds between two checks for progress
    pid_t process_ = -1;
    int status_ = 0; // of the other process, once it has ended
    bool ended_ = false;
    Clock::time_point lastCheck_ = Clock::now();
    std::uint64_t steps_ = 0;
    double idleTime_ = 0; // seconds without progress in a call
};

} // namespace

int runGuarded(const std::string &module, const GuardOptions &options, const std::function<int()> &work) {
    return options.on ? Guard(module, options).run(work) : work();
}

} // namespace velm::host
