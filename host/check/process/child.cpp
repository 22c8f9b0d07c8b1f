#include "host/check/process/child.h"

#include "host/base/error.h"
#include "host/guard/crash_handler.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstring>

namespace velm::host {

namespace {

constexpr off_t kPrintedTail = 3000; // bytes of output reported after a crash or a hang

std::string reason() { return std::strerror(errno); }

std::string signalText(int signal) {
    const char *name = sigabbrev_np(signal);
    return name ? "SIG" + std::string(name) : "signal " + std::to_string(signal);
}

} // namespace

Child::Child(const CheckRecord &names, const std::function<void()> &work, double limitSeconds)
    : start_(Clock::now()),
      deadline_(start_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(limitSeconds))),
      limit_(limitSeconds) {
    record_->serverCount = names.serverCount;
    std::memcpy(record_->servers, names.servers, sizeof names.servers);
    printed_ = memfd_create("printed", MFD_CLOEXEC);
    int ends[2];
    if (printed_ < 0 || pipe(ends) != 0) throw MachineError("cannot start a check: " + reason());
    process_ = fork();
    if (process_ < 0) throw MachineError("cannot start a check: " + reason());
    if (process_ == 0) {
        close(ends[0]);
        live(work, printed_);
    }
    setpgid(process_, process_); // in parent and child, since either may run first
    close(ends[1]);
    pipe_ = ends[0];
}

Child::~Child() {
    if (process_ > 0) finish();
    if (pipe_ >= 0) close(pipe_);
    if (printed_ >= 0) close(printed_);
}

void Child::live(const std::function<void()> &work, int printed) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(printed, STDOUT_FILENO);
    dup2(printed, STDERR_FILENO);
    useCheckRecord(&*record_);
    installSignalHandlers();
    runToTheEnd(work);
}

ChildEnd Child::finish() {
    pollfd end{.fd = pipe_, .events = POLLIN, .revents = 0};
    const bool ended = poll(&end, 1, 0) > 0;
    kill(-process_, SIGKILL);
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    if (ended && WIFEXITED(status) && WEXITSTATUS(status) == kDecidedStatus && record_->decided.load())
        return {record_->outcome, record_->message, {}};
    const std::string last = lastCalls(*record_);
    if (!ended)
        return {Outcome::hang, fmt::format("not done after {} s: {}", std::lround(limit_), last), printedText()};
    const std::string how =
        WIFSIGNALED(status) ? signalText(WTERMSIG(status)) : "ended with status " + std::to_string(WEXITSTATUS(status));
    return {Outcome::crash, how + ": " + last, printedText()};
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
