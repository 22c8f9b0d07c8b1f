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

constexpr double kLongestTick = 1, kShortestTick = 0.01, kTicksInALimit = 10; // seconds between two looks
constexpr double kAnswerTime = 1;                                             // seconds that threads have to answer
constexpr double kFallTime = 10;                                              // likewise a process that is about to end

// The signals that this process deals with, kept back so that they can be waited for.
class HeldSignals {
  public:
    HeldSignals() {
        sigemptyset(&held_);
        for (const int signal : {SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP}) sigaddset(&held_, signal);
        sigprocmask(SIG_BLOCK, &held_, &before_);
        std::signal(SIGCHLD, SIG_DFL); // it may have been inherited as ignored, and then nobody could be waited for
    }
    ~HeldSignals() { letGo(); }
    HeldSignals(const HeldSignals &) = delete;
    HeldSignals &operator=(const HeldSignals &) = delete;

    void letGo() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    // The next signal, or nothing after some seconds.
    std::optional<siginfo_t> next(double seconds) const {
        siginfo_t info{};
        const double whole = std::floor(seconds);
        const timespec limit{.tv_sec = static_cast<time_t>(whole),
                             .tv_nsec = static_cast<long>((seconds - whole) * 1e9)};
        if (sigtimedwait(&held_, &info, &limit) < 0) return std::nullopt;
        return info;
    }

  private:
    sigset_t held_{}, before_{};
};

// Signals are sent by the kernel's terminals to all that they are for.
bool isFromTerminal(const siginfo_t &info) { return info.si_code == SI_KERNEL; }

class Guard {
  public:
    Guard(const std::string &module, const GuardOptions &options) : limit_(options.callLimit) {
        std::snprintf(board_->module, kLongestPath, "%s", module.c_str());
        const double tick = limit_ > 0 ? limit_ / kTicksInALimit : kLongestTick;
        tick_ = std::clamp(tick, kShortestTick, kLongestTick);
    }

    int run(const std::function<int()> &work) {
        const pid_t guard = getpid();
        std::fflush(nullptr); // or it would be written by both
        process_ = fork();
        if (process_ < 0) throw MachineError("cannot start a process: " + std::string(std::strerror(errno)));
        if (process_ == 0) live(guard, work);
        while (!ended_) {
            const auto info = signals_.next(tick_);
            if (info) take(*info);
            look();
        }
        return tell();
    }

  private:
    // Libraries may have had threads before the fork that this process is born without: what they wait for as a program
    // ends would never come, so that it ends without them.
    [[noreturn]] void live(pid_t guard, const std::function<int()> &work) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != guard) _exit(kCrashedStatus); // it ended before
        signals_.letGo();
        useCallRecord(&*board_);
        installCrashHandlers();
        const int status = work();
        std::fflush(nullptr);
        board_->finished.store(status + 1);
        _exit(status);
    }

    void take(const siginfo_t &info) {
        switch (info.si_signo) {
        case SIGCHLD: ended_ = waitpid(process_, &status_, WNOHANG) == process_; break;
        case SIGINT:
        case SIGQUIT:
            if (!isFromTerminal(info)) kill(process_, info.si_signo);
            break;
        default: // it would not clean up
            end();
            dieOf(info.si_signo);
        }
    }

    // Counts the time in which nothing came of a call. Only time in which this process was awake counts: a machine or a
    // job may be stopped and go on.
    void look() {
        const auto now = Clock::now();
        const double passed = std::min(Seconds(now - seen_).count(), 2 * tick_);
        seen_ = now;
        std::uint64_t steps = 0;
        bool isBusy = false;
        for (const CallSlot &slot : board_->slots) {
            steps += slot.steps.load(std::memory_order_relaxed);
            isBusy = isBusy || slot.call.load(std::memory_order_relaxed) || slot.thread.load() != 0;
        }
        const bool isFalling = board_->fall.taker.load() != 0;
        quiet_ = (isBusy || isFalling) && steps == steps_ ? quiet_ + passed : 0;
        steps_ = steps;
        if (isFalling && quiet_ > kFallTime) end();
        if (!isFalling && limit_ > 0 && quiet_ > limit_ && !ended_) hung();
    }

    void hung() {
        quiet_ = 0;
        if (!board_->slots[0].call.load()) askThreads();
        if (ended_) return;
        const std::string where = hangText(*board_);
        if (where.empty()) return; // the host's own work, which may take its time
        end();
        char limit[32];
        std::snprintf(limit, sizeof limit, "%g", limit_);
        throw ModuleError(where + ": nothing came of it for " + limit + " s");
    }

    // Each render thread says where it is, if it can.
    void askThreads() {
        for (CallSlot &slot : board_->slots) {
            slot.answered.store(false);
            const int thread = slot.thread.load();
            if (thread != 0) syscall(SYS_tgkill, process_, thread, callSiteSignal());
        }
        const auto isOpen = [](const CallSlot &slot) { return slot.thread.load() != 0 && !slot.answered.load(); };
        const auto deadline = Clock::now() + Seconds(kAnswerTime);
        while (Clock::now() < deadline && std::ranges::any_of(board_->slots, isOpen))
            if (const auto info = signals_.next(kShortestTick)) take(*info);
    }

    // Makes sure of the other process's end, and removes what it left.
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
        if (board_->unfinished[0] != '\0') unlink(board_->unfinished);
    }

    [[noreturn]] void dieOf(int signal) const {
        std::signal(signal, SIG_DFL);
        raise(signal);
        signals_.letGo();
        _exit(128 + signal); // it was ignored or kept back from before
    }

    int tell() {
        cleanUp();
        const int finished = board_->finished.load();
        if (WIFEXITED(status_) && finished != 0) return finished - 1;
        const std::optional<CrashText> fall = crashText(*board_, status_);
        if (!fall) dieOf(WTERMSIG(status_));
        if (fall->isOfModule) throw ModuleError(fall->text);
        throw MachineError(fall->text);
    }

    const HeldSignals signals_;
    const SharedRecord<CallRecord> board_;
    const double limit_; // seconds; 0: none
    double tick_;        // likewise
    pid_t process_ = -1;
    int status_ = 0; // of the other process, once it has ended
    bool ended_ = false;
    Clock::time_point seen_ = Clock::now();
    std::uint64_t steps_ = 0;
    double quiet_ = 0; // seconds
};

} // namespace

int runGuarded(const std::string &module, const GuardOptions &options, const std::function<int()> &work) {
    return options.on ? Guard(module, options).run(work) : work();
}

} // namespace velm::host
