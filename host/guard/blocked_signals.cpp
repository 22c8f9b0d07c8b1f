#include "host/guard/blocked_signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cmath>
#include <utility>

namespace velm::host {

namespace {

const BlockedSignals *innermost = nullptr;

bool isIgnored(int signal) {
    struct sigaction now {};
    return sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
}

} // namespace

BlockedSignals::BlockedSignals() : outer_(std::exchange(innermost, this)) {
    sigemptyset(&blocked_);
    sigaddset(&blocked_, SIGCHLD);
    // An ignored signal would be queued all the same while it is blocked.
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP})
        if (!isIgnored(signal)) sigaddset(&blocked_, signal);
    sigprocmask(SIG_BLOCK, &blocked_, &previous_);
    std::signal(SIGCHLD, SIG_DFL);
}

BlockedSignals::~BlockedSignals() {
    innermost = outer_;
    sigprocmask(SIG_SETMASK, &previous_, nullptr);
}

std::optional<siginfo_t> BlockedSignals::next(double seconds) const {
    siginfo_t info{};
    const double whole = std::floor(seconds);
    const timespec limit{.tv_sec = static_cast<time_t>(whole), .tv_nsec = static_cast<long>((seconds - whole) * 1e9)};
    if (sigtimedwait(&blocked_, &info, &limit) < 0) return std::nullopt;
    return info;
}

int BlockedSignals::openDescriptor() const { return signalfd(-1, &blocked_, SFD_CLOEXEC | SFD_NONBLOCK); }

void BlockedSignals::dieOf(int signal) const {
    std::signal(signal, SIG_DFL);
    raise(signal);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    _exit(128 + signal); // the signal does not end processes
}

void BlockedSignals::unblockInForkedProcess() {
    if (!innermost) return;
    const BlockedSignals *outermost = innermost;
    while (outermost->outer_) outermost = outermost->outer_;
    sigprocmask(SIG_SETMASK, &outermost->previous_, nullptr);
    innermost = nullptr;
}

} // namespace velm::host
