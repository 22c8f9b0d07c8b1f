#include "host/guard/guarded.h"

#include "host/base/error.h"
#include "host/guard/blocked_signals.h"
#include "host/guard/call_record.h"
#include "host/guard/crash_handler.h"
#include "host/guard/crash_text.h"
#include "host/guard/orphans.h"
#include "host/guard/record_copy.h"
#include "host/guard/shared_record.h"

#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <bitset>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

namespace velm::host {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double kLongestTick = 1, kShortestTick = 0.01; // seconds between two checks for progress
constexpr double kTicksInALimit = 10;
constexpr double kAnswerTime = 1;   // seconds that threads have to answer where they are
constexpr double kCrashTime = 10;   // seconds that a process that crashed has to end
constexpr double kSignalTime = 0.5; // seconds within which a signal to both processes reaches the second one

// A terminal's signals come from the kernel, and reach every process of the foreground group by themselves.
bool isFromTerminal(const siginfo_t &info) { return info.si_code == SI_KERNEL; }

// The parent of a process; 0 if there is no such process.
pid_t parentOf(pid_t process) {
    std::ifstream file(fmt::format("/proc/{}/stat", process));
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t nameEnd = text.rfind(')'); // the name itself may contain anything
    pid_t parent = 0;
    if (nameEnd != std::string::npos) std::sscanf(text.c_str() + nameEnd, ") %*c %d", &parent);
    return parent;
}

class Guard {
  public:
    Guard(const std::string &module, const GuardOptions &options) : module_(module), limit_(options.callLimit) {
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
            noteChild(); // also without SIGCHLD, which may have reached an idle thread of a library
            checkProgress();
        }
        cleanUp();
        return result();
    }

  private:
    // The other process. It ends with _exit, without static destructors and exit handlers: a library that had threads
    // before the fork might wait in them for threads that do not exist in this process.
    [[noreturn]] void runWork(pid_t guard, const std::function<int()> &work) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != guard) _exit(kCrashedStatus); // the guarding process ended before the call above
        BlockedSignals::unblockInForkedProcess();
        useCallRecord(&*record_);
        installCrashHandlers();
        const int status = work();
        std::fflush(nullptr);
        record_->finished.store(status + 1);
        _exit(status);
    }

    void handle(const siginfo_t &info) {
        received_.set(static_cast<std::size_t>(info.si_signo));
        switch (info.si_signo) {
        case SIGCHLD:
            noteChild();
            orphans_.reap({&process_, 1});
            break;
        case SIGINT:
        case SIGQUIT:
            if (!ended_ && !isFromTerminal(info)) kill(process_, info.si_signo);
            break;
        default: // the other process would not remove its unfinished file
            end();
            signals_.dieOf(info.si_signo);
        }
    }

    // Notes whether the other process has stopped, continued or ended.
    void noteChild() {
        int status = 0;
        while (!ended_ && waitpid(process_, &status, WNOHANG | WUNTRACED | WCONTINUED) == process_) {
            stopSignal_ = WIFSTOPPED(status) ? WSTOPSIG(status) : 0;
            if (WIFSTOPPED(status) || WIFCONTINUED(status)) continue;
            status_ = status;
            ended_ = true;
        }
    }

    // Adds up the time without progress in a call, and acts when it exceeds a limit. One check adds two ticks at most,
    // so that time does not count in which this process was stopped, too, as by Ctrl-Z, or the machine was suspended.
    void checkProgress() {
        if (ended_) return;
        const auto now = Clock::now();
        const double passed = std::min(Seconds(now - lastCheck_).count(), 2 * tick_);
        lastCheck_ = now;
        std::uint64_t steps = 0;
        bool isBusy = false;
        for (const CallSlot &slot : record_->slots) {
            steps += slot.steps.load(std::memory_order_relaxed);
            isBusy = isBusy || slot.call.load(std::memory_order_relaxed) || slot.thread.load() != 0;
        }
        if (!isIntact(*record_)) {
            end();
            throw ModuleError(overwrittenText(module_, "was ended"));
        }
        isBusy = isBusy || stopSignal_ != 0;
        const bool isCrashing = record_->crash.thread.load() != 0;
        idleTime_ = (isBusy || isCrashing) && steps == steps_ ? idleTime_ + passed : 0;
        steps_ = steps;
        if (isCrashing && idleTime_ > kCrashTime) end();
        if (!isCrashing && limit_ > 0 && idleTime_ > limit_) handleHang();
    }

    void handleHang() {
        idleTime_ = 0;
        if (stopSignal_ != 0) {
            CrashText stop = stopText(*copiedRecord(), stopSignal_);
            end();
            stop.text += fmt::format(": not continued for {:g} s", limit_);
            throwCrash(stop);
        }
        if (!record_->slots[0].call.load()) askThreads();
        if (ended_) return;
        const std::string hang = hangText(*copiedRecord());
        if (hang.empty()) return; // the host's own work has no limit
        end();
        throw ModuleError(fmt::format("{}: no progress for {:g} s", hang, limit_));
    }

    // Asks each render thread for its call site, and waits until all have answered or kAnswerTime has passed.
    void askThreads() {
        for (CallSlot &slot : record_->slots) {
            slot.answered.store(false);
            const int thread = slot.thread.load(), process = slot.process.load();
            if (thread != 0 && isWatched(process)) syscall(SYS_tgkill, process, thread, callSiteSignal());
        }
        const auto isUnanswered = [](const CallSlot &slot) { return slot.thread.load() != 0 && !slot.answered.load(); };
        const auto deadline = Clock::now() + Seconds(kAnswerTime);
        while (Clock::now() < deadline && std::ranges::any_of(record_->slots, isUnanswered))
            if (const auto info = signals_.next(kShortestTick)) handle(*info);
    }

    // Whether this is the other process or a worker that it has forked. A module may have written any number into the
    // record.
    bool isWatched(pid_t process) const { return process == process_ || parentOf(process) == process_; }

    // Kills the other process if it still runs, and clears up after it.
    void end() {
        if (!ended_) {
            kill(process_, SIGKILL);
            while (waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
            }
        }
        ended_ = true;
        cleanUp();
    }

    // Kills what the other process has left behind, and removes its unfinished file. Call it once it has ended.
    void cleanUp() const {
        orphans_.kill();
        char unfinished[kLongestPath];
        copyText(unfinished, record_->unfinished, sizeof unfinished);
        if (unfinished[0] != '\0') unlink(unfinished);
    }

    // A copy of the record that is safe to read. ModuleError if the record has been overwritten.
    std::unique_ptr<CallRecord> copiedRecord() {
        auto copy = std::make_unique<CallRecord>();
        if (!copyRecord(*record_, *copy)) {
            end();
            throw ModuleError(overwrittenText(module_, endText(status_)));
        }
        copyText(copy->module, module_.c_str(), std::min(module_.size() + 1, sizeof copy->module));
        return copy;
    }

    // The status of the work, once the other process has ended; an exception if it ended otherwise.
    int result() {
        const int finished = record_->finished.load();
        if (WIFEXITED(status_) && finished == WEXITSTATUS(status_) + 1) return finished - 1;
        if (WIFSIGNALED(status_) && isForBoth(WTERMSIG(status_))) signals_.dieOf(WTERMSIG(status_));
        throwCrash(crashText(*copiedRecord(), status_));
    }

    // Whether the signal that ended the other process is to end this one, too: if this one has received it as well, or
    // does so within a moment, since batch systems send a signal to one process after the other. SIGPIPE says that
    // nobody reads the output any more.
    bool isForBoth(int signal) {
        const auto number = static_cast<std::size_t>(signal);
        const auto deadline = Clock::now() + Seconds(kSignalTime);
        while (signals_.has(signal) && !received_.test(number) && Clock::now() < deadline)
            if (const auto info = signals_.next(kShortestTick)) handle(*info);
        return received_.test(number) || signal == SIGPIPE;
    }

    const std::string module_; // the record's own may be overwritten
    const BlockedSignals signals_;
    const Orphans orphans_;
    const SharedRecord<CallRecord> record_;
    const double limit_; // seconds; 0: none
    double tick_;        // seconds between two checks for progress
    pid_t process_ = -1;
    int status_ = 0; // of the other process, once it has ended
    bool ended_ = false;
    std::bitset<NSIG> received_; // the signals that this process has received
    int stopSignal_ = 0;         // that has stopped the other process; 0: it is not stopped
    Clock::time_point lastCheck_ = Clock::now();
    std::uint64_t steps_ = 0;
    double idleTime_ = 0; // seconds without progress in a call
};

} // namespace

int runGuarded(const std::string &module, const GuardOptions &options, const std::function<int()> &work) {
    return options.on ? Guard(module, options).run(work) : work();
}

} // namespace velm::host
