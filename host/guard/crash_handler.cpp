#include "host/guard/crash_handler.h"

#include "host/base/error.h"
#include "host/guard/crash_signals.h"
#include "host/guard/module_call.h"
#include "host/guard/stack_search.h"

#include <cxxabi.h>
#include <fmt/format.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <typeinfo>

namespace velm::host {

namespace {

constexpr const char *kEvaluate = "evaluate";

// The process that installed the handlers; 0: none did. A process that is forked from it inherits the handlers, but its
// crashes are not recorded.
pid_t handledProcess = 0;
std::array<struct sigaction, kCrashSignals.size()> previousActions;

// The call that is noted in a slot.
CallSite notedCallSite(const CallSlot &slot) {
    const char *call = slot.call.load(std::memory_order_relaxed);
    if (!call) return {};
    CallSite noted{.inModule = true, .call = call, .servers = {}};
    if (const int server = slot.server.load(std::memory_order_relaxed); server >= 0) noted.servers.add(server);
    return noted;
}

// An evaluation by any of the servers that have been called.
CallSite someEvaluation() { return {.inModule = true, .call = kEvaluate, .servers = callRecord().used}; }

// Whether the thread that a signal interrupted had floating-point traps turned on. The host never does that.
bool hasTrapsOn([[maybe_unused]] const void *context) {
#if defined(__x86_64__)
    constexpr unsigned kSimdMasks = 0x1F80, kClassicMasks = 0x3F;
    const auto *registers = static_cast<const ucontext_t *>(context)->uc_mcontext.fpregs;
    return registers &&
           ((registers->mxcsr & kSimdMasks) != kSimdMasks || (registers->cwd & kClassicMasks) != kClassicMasks);
#else
    return false;
#endif
}

// The call site of the calling thread: from its slot if a call is noted there, else from its stack.
CallSite currentCallSite(int slotNumber, void *context) {
    const CallRecord &record = callRecord();
    if (slotNumber >= 0) {
        const CallSlot &slot = record.slots[slotNumber];
        if (const CallSite noted = notedCallSite(slot); noted.inModule) return noted;
        // The stack leads through the module that asked for the dialog.
        if (slot.inDialog.load(std::memory_order_relaxed)) return {};
    }
    const StackFinding found = searchStack(context);
    // A thread that is not the host's, while the module's code is loaded and still unknown.
    if (!found.inModule && slotNumber < 0) return notedCallSite(record.slots[0]);
    if (!found.inModule) return {};
    return {.inModule = true, .call = kEvaluate, .servers = found.servers.isEmpty() ? record.used : found.servers};
}

// True for exactly one thread: the first to crash. Only it writes the crash record.
bool claimCrashRecord() {
    int none = 0;
    return callRecord().crash.thread.compare_exchange_strong(none, systemThread());
}

void fillCrashRecord(CrashKind kind, int signal, void *context) {
    CrashRecord &crash = callRecord().crash;
    crash.kind = kind;
    crash.signal = signal;
    crash.slot = ownSlot();
    crash.site = currentCallSite(crash.slot, context);
    if (!crash.site.inModule && signal == SIGFPE && context && hasTrapsOn(context)) crash.kind = CrashKind::trap;
    // Both are the module's doing, although its code is not on the stack any more.
    const bool isPast = crash.kind == CrashKind::trap || crash.kind == CrashKind::threadExit;
    if (isPast && !crash.site.inModule) crash.site = someEvaluation();
    crash.filled.store(true);
}

// Blocks until the first thread that crashed has ended the process. Returns at once if the calling thread is that one,
// as when it crashes again in its handler.
void waitForExit() {
    if (callRecord().crash.thread.load() != systemThread())
        for (;;) pause();
}

// Restores the effect that the signal had before the handlers were installed, and makes it happen.
void restoreAndRaise(int signal, const siginfo_t *info) {
    for (std::size_t i = 0; i < kCrashSignals.size(); ++i)
        if (kCrashSignals[i] == signal) sigaction(signal, &previousActions[i], nullptr);
    // A signal that a process sent is not repeated when the handler returns, unlike that of a fault.
    if (info->si_code <= 0) raise(signal);
}

void onCrashSignal(int signal, siginfo_t *info, void *context) {
    if (getpid() == handledProcess) {
        if (claimCrashRecord())
            fillCrashRecord(CrashKind::signal, signal, context);
        else
            waitForExit();
    }
    restoreAndRaise(signal, info);
}

void onCallSiteSignal(int, siginfo_t *, void *context) {
    const int previousError = errno;
    if (const int index = ownSlot(); index >= 0) {
        CallSlot &slot = callRecord().slots[index];
        slot.answer = currentCallSite(index, context);
        slot.answered.store(true);
    }
    errno = previousError;
}

[[noreturn]] void exitAfterCrash(CrashKind kind, const std::string &text) {
    if (claimCrashRecord()) {
        std::snprintf(callRecord().crash.text, kLongestText, "%s", text.c_str());
        fillCrashRecord(kind, 0, nullptr);
    } else {
        waitForExit();
    }
    _exit(kCrashedStatus);
}

[[noreturn]] void onTerminate() { exitAfterCrash(CrashKind::exception, currentExceptionText()); }

void onExit() {
    if (getpid() == handledProcess && callRecord().finished.load() == 0) exitAfterCrash(CrashKind::exit, "");
}

void installHandler(int signal, void (*handler)(int, siginfo_t *, void *), int flags, struct sigaction *previous) {
    struct sigaction action {};
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, previous);
}

std::string typeText() {
    const std::type_info *type = abi::__cxa_current_exception_type();
    if (!type) return "an exception";
    int status = 0;
    char *readable = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
    std::string text = moduleText(status == 0 ? readable : type->name());
    std::free(readable);
    return text;
}

} // namespace

void endByModuleError(const std::exception &error) {
    if (getpid() == handledProcess) exitAfterCrash(CrashKind::exception, error.what());
    std::fprintf(stderr, "%s\n", error.what());
    std::abort();
}

void endAfterThreadExit() {
    if (getpid() == handledProcess) exitAfterCrash(CrashKind::threadExit, "");
}

void installSignalHandlers() {
    static const AlternateStack stack; // for the rest of the process
    handledProcess = getpid();
    searchStack(nullptr); // the first unwinding may load a library, which a signal handler must not do
    for (std::size_t i = 0; i < kCrashSignals.size(); ++i) {
        struct sigaction previous {};
        installHandler(kCrashSignals[i], onCrashSignal, 0, &previous);
        // In a process forked from one with these handlers, the effect before them is already noted.
        if (previous.sa_sigaction != onCrashSignal) previousActions[i] = previous;
    }
    installHandler(callSiteSignal(), onCallSiteSignal, SA_RESTART, nullptr);
}

void installCrashHandlers() {
    installSignalHandlers();
    std::set_terminate(onTerminate);
    installExitHandler();
}

void installExitHandler() { std::atexit(onExit); }

void installCrashHandlersOfWorker() {
    if (handledProcess == 0)
        installCrashHandlers();
    else
        handledProcess = getpid();
}

bool crashHandlersInstalled() { return handledProcess != 0; }

int callSiteSignal() { return SIGRTMIN + 3; }

std::string currentExceptionText() {
    if (!std::current_exception()) return "ended the process by std::terminate";
    const std::string type = typeText();
    try {
        throw;
    } catch (const ModuleError &error) { // its message already names the call
        return error.what();
    } catch (const std::exception &error) {
        return fmt::format("threw {}: {}", type, moduleText(error.what()));
    } catch (...) {
        return "threw " + type;
    }
}

} // namespace velm::host
