#include "host/check/process/child.h"

#include "host/base/error.h"
#include "host/guard/blocked_signals.h"
#include "host/guard/crash_handler.h"
#include "host/guard/orphans.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <vector>

namespace velm::host {

namespace {

constexpr off_t kPrintedTail = 3000; // bytes of output reported after a crash or a hang

std::string reason() { return std::strerror(errno); }

std::string signalText(int signal) {
    const char *name = sigabbrev_np(signal);
    return name ? "SIG" + std::string(name) : "signal " + std::to_string(signal);
}

std::string howItEnded(const CheckRecord &record, int status) {
    if (WIFSIGNALED(status)) return signalText(WTERMSIG(status));
    const bool isFilled = record.crash.filled.load();
    if (isFilled && record.crash.kind == CrashKind::exit) return "ended the process by exit";
    if (isFilled && record.crash.kind == CrashKind::threadExit) return "ended the thread by pthread_exit";
    return fmt::format("ended with status {}", WEXITSTATUS(status));
}

// The processes of all Child objects, and what ended ones have left behind.
std::vector<pid_t> running;
std::optional<Orphans> orphans; // while any run

} // namespace

Child::Child(const CheckRecord &names, const std::function<void()> &work, double limitSeconds)
    : start_(Clock::now()),
      deadline_(start_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(limitSeconds))),
      limit_(limitSeconds) {
    record_->serverCount = names.serverCount;
    std::memcpy(record_->servers, names.servers, sizeof names.servers);
    printed_ = memfd_create("printed", MFD_CLOEXEC);
    if (printed_ < 0) throw MachineError("cannot start a check: " + reason());
    if (running.empty()) orphans.emplace();
    process_ = fork();
    if (process_ < 0) throw MachineError("cannot start a check: " + reason());
    if (process_ == 0) live(work, printed_);
    running.push_back(process_);
    setpgid(process_, process_); // in parent and child, since either may run first
    // Not a pipe that closes with the process: one that the module has forked would keep it open.
    ended_ = static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
    if (ended_ < 0) {
        const std::string why = reason();
        finish();
        throw MachineError("cannot watch a check: " + why);
    }
}

Child::~Child() {
    if (process_ > 0) finish();
    if (ended_ >= 0) close(ended_);
    if (printed_ >= 0) close(printed_);
}

void Child::live(const std::function<void()> &work, int printed) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    BlockedSignals::unblockInForkedProcess();
    // The processes that the module leaves behind stay below this one until it ends, apart from those of other checks.
    running.clear();
    orphans.reset();
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(printed, STDOUT_FILENO);
    dup2(printed, STDERR_FILENO);
    useCheckRecord(&*record_);
    installSignalHandlers();
    installExitHandler();
    runToTheEnd(work);
}

ChildEnd Child::finish() {
    pollfd end{.fd = ended_, .events = POLLIN, .revents = 0};
    const bool ended = poll(&end, 1, 0) > 0;
    kill(-process_, SIGKILL);
    kill(process_, SIGKILL); // also if the module has moved it to another group
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    std::erase(running, process_);
    process_ = -1;
    orphans->kill(running);
    if (running.empty()) orphans.reset();
    copy_ = copyOf(*record_, isIntact_);
    return endOf(ended, status);
}

ChildEnd Child::endOf(bool ended, int status) const {
    const bool isDecided = ended && WIFEXITED(status) && WEXITSTATUS(status) == kDecidedStatus && copy_->decided.load();
    if (isDecided && isIntact_) return {copy_->outcome, copy_->message, {}};
    if (!isIntact_) return {Outcome::crash, "it has overwritten the host's record of its calls", printedText()};
    const std::string last = lastCalls(*copy_);
    if (!ended) return {Outcome::hang, fmt::format("not done after {:g} s: {}", limit_, last), printedText()};
    return {Outcome::crash, fmt::format("{}: {}", howItEnded(*copy_, status), last), printedText()};
}

std::string Child::printedText() const {
    const off_t size = lseek(printed_, 0, SEEK_END);
    const off_t from = std::max<off_t>(0, size - kPrintedTail);
    std::string text(static_cast<std::size_t>(std::max<off_t>(0, size - from)), '\0');
    const ssize_t got = pread(printed_, text.data(), text.size(), from);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, got)));
    return text;
}

ChildEnd waitFor(Child &child) {
    while (!child.isOver()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(child.deadline() - Child::Clock::now());
        pollfd end{.fd = child.descriptor(), .events = POLLIN, .revents = 0};
        if (poll(&end, 1, static_cast<int>(std::max<long>(0, left.count()))) > 0) break;
    }
    return child.finish();
}

void runToTheEnd(const std::function<void()> &work) {
    try {
        work();
    } catch (const std::exception &error) {
        failCheck(error.what());
    }
    CheckRecord &record = checkRecord();
    if (!record.decided.exchange(true)) {
        record.outcome = record.notes[0] != '\0' ? Outcome::warn : Outcome::pass;
        std::memcpy(record.message, record.notes, sizeof record.notes);
    }
    _exit(kDecidedStatus);
}

} // namespace velm::host
