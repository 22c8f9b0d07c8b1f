#include "host/io/reader_process.h"

#include "host/base/error.h"
#include "host/guard/crash_text.h"
#include "host/guard/shared_record.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <utility>

namespace velm::host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kTick = 0.1;                 // seconds at most between two looks at the other process
constexpr useconds_t kMicroseconds = 200;     // likewise, after it has closed its output
constexpr std::size_t kLongestMessage = 4000; // bytes
constexpr std::size_t kLongestPrinted = 300;  // bytes of the libraries' own lines in a message

// How the work ended. What ends without any of these crashed.
enum class Ending : int { none, done, refused, outOfMemory, exited };

struct ReadRecord {
    std::atomic<Ending> ending;
    char message[kLongestMessage]; // of Ending::refused
};

// The bytes of private memory that this process has, as RLIMIT_DATA counts them.
std::uint64_t privateMemory() {
    std::ifstream sizes("/proc/self/statm"); // in pages: size, resident, shared, text, lib, data and stack
    std::uint64_t pages = 0;
    for (int i = 0; i < 6; ++i) sizes >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// ---- In the other process ----

ReadRecord *ownRecord = nullptr;

[[noreturn]] void endWith(Ending ending) {
    ownRecord->ending.store(ending);
    _exit(0);
}

void limitPrivateMemory(std::uint64_t bytes) {
    rlimit limit{};
    getrlimit(RLIMIT_DATA, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, bytes);
    setrlimit(RLIMIT_DATA, &limit);
}

// The memory that the process may take: private memory beyond what it starts with, and memory in the arena. The system
// counts only the first, so its limit is lowered by the second.
class MemoryBudget {
  public:
    explicit MemoryBudget(std::uint64_t bytes) : start_(privateMemory()), left_(bytes) {
        limitPrivateMemory(start_ + left_);
    }
    // Takes bytes for the arena.
    void charge(std::size_t bytes) {
        const std::uint64_t taken = std::max(privateMemory(), start_) - start_;
        if (taken > left_ || bytes > left_ - taken) throw std::bad_alloc();
        left_ -= bytes;
        limitPrivateMemory(start_ + left_);
    }

  private:
    const std::uint64_t start_;
    std::uint64_t left_;
};

// Takes nothing over from the process before the fork that would act in this one. Signals that end programs are for the
// other process, with which this one ends.
void resetSignals() {
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) std::signal(signal, SIG_DFL);
    }
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void captureOutput(int output) {
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) dup2(output, stream);
    fcntl(output, F_SETFL, O_NONBLOCK); // what does not fit into the pipe is lost
}

[[noreturn]] void refuse(const std::string &message) {
    std::snprintf(ownRecord->message, kLongestMessage, "%s", message.c_str());
    endWith(Ending::refused);
}

// Runs the work to an end that the record tells. Ends with _exit: a library that had threads before the fork might wait
// in its exit handlers for threads that do not exist here.
[[noreturn]] void runHere(const char *what, const std::function<void()> &work) {
    std::set_terminate(std::abort);
    std::atexit([] { endWith(Ending::exited); }); // the handler that is run first
    std::set_new_handler([] { endWith(Ending::outOfMemory); });
    try {
        work();
    } catch (const InputError &error) {
        refuse(error.message());
    } catch (const std::bad_alloc &) {
        endWith(Ending::outOfMemory);
    } catch (const std::exception &error) {
        refuse(fmt::format("cannot read {}: {}", what, error.what()));
    } catch (...) {
        refuse(fmt::format("cannot read {}: the library that reads it threw an exception", what));
    }
    endWith(Ending::done);
}

// ---- In this process ----

class ReaderProcess {
  public:
    ReaderProcess(SharedArena &arena, const char *what, const std::function<void()> &work) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) fail();
        printed_ = ends[0];
        const pid_t starter = getpid();
        std::fflush(nullptr); // or the other process would hand on what is buffered
        process_ = fork();
        if (process_ == 0) start(arena, what, work, starter, ends[1]);
        close(ends[1]);
        if (process_ < 0) fail();
    }
    ~ReaderProcess() { close(printed_); }
    ReaderProcess(const ReaderProcess &) = delete;
    ReaderProcess &operator=(const ReaderProcess &) = delete;

    // Waits for the process to end, and kills it after that many seconds; 0: never. Time does not count in which this
    // process is stopped.
    void wait(double seconds) {
        double spent = 0;
        for (auto last = Clock::now(); !hasEnded();) {
            if (!readPrinted(kTick)) usleep(kMicroseconds); // it closes the pipe just before it ends
            const auto now = Clock::now();
            spent += std::min(std::chrono::duration<double>(now - std::exchange(last, now)).count(), 2 * kTick);
            if (seconds == 0 || spent < seconds || isTooSlow_) continue;
            isTooSlow_ = true;
            kill(process_, SIGKILL);
        }
        while (readPrinted(0)) {
        }
    }

    // Why the file was not read; empty if it was.
    std::string failure(const char *what) const {
        const auto because = [&](const std::string &why) { return fmt::format("cannot read {}: {}", what, why); };
        const ReadLimits &limits = readLimits();
        switch (record_->ending.load()) {
        case Ending::done: return "";
        case Ending::refused: return std::string(record_->message, strnlen(record_->message, kLongestMessage));
        case Ending::outOfMemory:
            return because(fmt::format("it takes more than {} MiB of memory (see --read-memory)", limits.mebibytes));
        case Ending::exited: return because("the library that reads it ended the process");
        default: break;
        }
        if (isTooSlow_) return because(fmt::format("it takes longer than {:g} s (see --read-time)", limits.seconds));
        if (WIFSIGNALED(status_))
            return because(fmt::format("the library that reads it crashed ({})", signalText(WTERMSIG(status_))));
        return because(fmt::format("the library that reads it ended with status {}", WEXITSTATUS(status_)));
    }

    // The last lines that the libraries printed, separated by "; ".
    std::string printed() const {
        std::string text = printedText_;
        while (!text.empty() && text.back() == '\n') text.pop_back();
        for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) text.replace(at, 1, "; ");
        return text.size() <= kLongestPrinted ? text : "..." + text.substr(text.size() - kLongestPrinted);
    }

  private:
    [[noreturn]] static void fail() {
        throw MachineError("cannot start a process that reads a file: " + std::string(std::strerror(errno)));
    }

    [[noreturn]] void start(SharedArena &arena, const char *what, const std::function<void()> &work, pid_t starter,
                            int output) const {
        SharedArena::unmapSealed();
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != starter) _exit(0); // it ended before the call above
        resetSignals();
        captureOutput(output);
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        ownRecord = &*record_;
        static MemoryBudget budget(readLimitInBytes());
        arena.fillHere([](std::size_t bytes) { budget.charge(bytes); });
        runHere(what, work);
    }

    // Whether the process has ended. Its status is not known if somebody else waited for it.
    bool hasEnded() {
        const pid_t found = waitpid(process_, &status_, WNOHANG);
        return found == process_ || (found < 0 && errno == ECHILD);
    }

    // Reads some of what was printed, for which it waits that long; false if there was nothing.
    bool readPrinted(double seconds) {
        pollfd readable{.fd = printed_, .events = POLLIN, .revents = 0};
        if (poll(&readable, 1, static_cast<int>(seconds * 1000)) <= 0) return false;
        std::array<char, 4096> part;
        const ssize_t count = read(printed_, part.data(), part.size());
        if (count <= 0) return false;
        printedText_.append(part.data(), static_cast<std::size_t>(count));
        if (printedText_.size() > 2 * part.size()) printedText_.erase(0, printedText_.size() - part.size());
        return true;
    }

    const SharedRecord<ReadRecord> record_;
    pid_t process_ = -1;
    int printed_ = -1; // where the libraries' output can be read
    int status_ = 0;
    bool isTooSlow_ = false;
    std::string printedText_;
};

} // namespace

ReadLimits &readLimits() {
    static ReadLimits limits;
    return limits;
}

std::uint64_t readLimitInBytes() { return readLimits().mebibytes << 20; }

void refuseResult(const std::string &file, const char *what) {
    throw InputError({.file = file}, fmt::format("cannot read {}: the library that reads it went wrong", what));
}

void readInOtherProcess(SharedArena &arena, const std::string &file, const char *what,
                        const std::function<void()> &work) {
    ReaderProcess reader(arena, what, work);
    reader.wait(readLimits().seconds);
    const std::string failure = reader.failure(what), printed = reader.printed();
    if (!failure.empty())
        throw InputError({.file = file}, printed.empty() ? failure : fmt::format("{} ({})", failure, printed));
    arena.seal();
}

} // namespace velm::host
