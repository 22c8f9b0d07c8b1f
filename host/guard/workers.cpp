#include "host/guard/workers.h"

#include "host/base/error.h"
#include "host/guard/call_record.h"
#include "host/guard/crash_handler.h"
#include "host/guard/crash_text.h"
#include "host/guard/record_copy.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace velm::host {

namespace {

std::string systemReason() { return std::strerror(errno); }

// What a worker's process does, from the fork to its end. It ends with _exit: exit handlers and static destructors
// belong to the process that it was forked from.
[[noreturn]] VELM_FORCED_UNWIND void runProcess(pid_t parent, const std::function<void()> &work) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(kCrashedStatus); // the parent ended before the call above
    std::signal(SIGINT, SIG_IGN);                   // a terminal sends it to all; the parent decides what it means
    installCrashHandlersOfWorker();
    try {
        work();
    } catch (abi::__forced_unwind &) {
        endAfterThreadExit();
        throw;
    }
    std::fflush(nullptr);
    _exit(0);
}

// Throws what the end of a worker means, and clears its traces from the call record.
[[noreturn]] void throwWorkerError(pid_t process, int status) {
    CallRecord &record = callRecord();
    const auto copy = std::make_unique<CallRecord>();
    if (!copyRecord(record, *copy)) throw ModuleError(overwrittenText(namedModule(), endText(status)));
    const CrashText crash = crashText(*copy, status);
    for (CallSlot &slot : record.slots) {
        if (slot.process.load() != process) continue;
        slot.call.store(nullptr);
        slot.thread.store(0);
    }
    record.crash.filled.store(false);
    record.crash.thread.store(0);
    throwCrash(crash);
}

} // namespace

Workers::Workers(int count, In in, const std::function<void(int)> &work)
    : work_(work), done_(static_cast<std::size_t>(count)) {
    if (pipe2(pipe_, O_CLOEXEC) != 0) throw MachineError("cannot make a pipe: " + systemReason());
    try {
        if (in == In::processes) {
            startProcesses(count);
        } else {
            threads_.reserve(static_cast<std::size_t>(count));
            for (int index = 0; index < count; ++index) threads_.emplace_back([this, index] { runWorker(index); });
        }
    } catch (...) {
        endAll();
        throw;
    }
}

Workers::~Workers() { endAll(); }

void Workers::startProcesses(int count) {
    shareCallRecord();
    std::signal(SIGCHLD, SIG_DFL); // if it was inherited as ignored, waitpid would give no status
    processes_.reserve(static_cast<std::size_t>(count));
    std::fflush(nullptr); // or each process would write what is buffered
    const pid_t parent = getpid();
    for (int index = 0; index < count; ++index) {
        const pid_t process = fork();
        if (process < 0) throw MachineError("cannot start a process: " + systemReason());
        if (process == 0) runProcess(parent, [this, index] { runWorker(index); });
        processes_.push_back({.id = process, .running = true});
    }
}

// Does a worker's work, and then wakes up the thread that waits.
void Workers::runWorker(int index) {
    work_(index);
    done_[static_cast<std::size_t>(index)].store(true);
    const char byte = 0;
    while (write(pipe_[1], &byte, 1) < 0 && errno == EINTR) {
    }
}

bool Workers::wait(std::chrono::milliseconds limit) {
    const auto areDone = [this] {
        return std::all_of(done_.data(), done_.data() + done_.size(), [](const auto &done) { return done.load(); });
    };
    pollfd readable{.fd = pipe_[0], .events = POLLIN, .revents = 0};
    if (!areDone() && poll(&readable, 1, static_cast<int>(limit.count())) > 0) {
        char bytes[64];
        [[maybe_unused]] const ssize_t count = read(pipe_[0], bytes, sizeof bytes); // only to empty the pipe
    }
    const bool ended = areDone();
    reap(ended ? 0 : WNOHANG);
    return ended;
}

void Workers::waitForAll() {
    while (!wait(std::chrono::milliseconds{50})) {
    }
}

// Notes which processes have ended. `options` are those of waitpid.
void Workers::reap(int options) {
    for (std::size_t i = 0; i < processes_.size(); ++i) {
        Process &process = processes_[i];
        int status = 0;
        if (!process.running) continue;
        const pid_t found = waitpid(process.id, &status, options);
        // Its status is lost if the module has waited for it, or has SIGCHLD ignored.
        const bool isLost = found < 0 && errno == ECHILD;
        if (found != process.id && !isLost) continue;
        process.running = false;
        // One that ended without doing its work was ended by the module: by _exit, or by ending its only thread.
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && done_[i].load()) continue;
        endAll();
        throwWorkerError(process.id, status);
    }
}

void Workers::endAll() {
    for (const Process &process : processes_)
        if (process.running) kill(process.id, SIGKILL);
    for (Process &process : processes_) {
        if (!process.running) continue;
        while (waitpid(process.id, nullptr, 0) < 0 && errno == EINTR) {
        }
        process.running = false;
    }
    threads_.clear();
    for (int &end : pipe_)
        if (end >= 0) close(std::exchange(end, -1));
}

int usableProcessors() {
    cpu_set_t set;
    CPU_ZERO(&set);
    // Fails where the system has more processors than the set has room for.
    if (sched_getaffinity(0, sizeof set, &set) != 0)
        return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    return std::max(1, CPU_COUNT(&set));
}

} // namespace velm::host
