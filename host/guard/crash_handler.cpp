#include "host/guard/crash_handler.h"

#include "host/base/error.h"
#include "host/guard/stack_search.h"

#include <cxxabi.h>
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

constexpr std::array kFalls = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};
constexpr const char *kEvaluate = "evaluate";

pid_t watched = 0; // a process that this one starts has falls of its own
std::array<struct sigaction, kFalls.size()> before;

// What a thread is in, by its slot where that says so, else by its stack.
CallSite whereabouts(int slotNumber, void *context) {
    const CallRecord &board = callRecord();
    if (slotNumber >= 0) {
        const CallSlot &slot = board.slots[slotNumber];
        if (const char *call = slot.call.load(std::memory_order_relaxed)) {
            CallSite noted{.inModule = true, .call = call, .servers = {}};
            if (const int server = slot.server.load(std::memory_order_relaxed); server >= 0) noted.servers.add(server);
            return noted;
        }
        // The stack leads through the module that asked for the dialog.
        if (slot.inDialog.load(std::memory_order_relaxed)) return {};
    }
    const StackFinding found = searchStack(context);
    if (!found.inModule) return {};
    return {.inModule = true, .call = kEvaluate, .servers = found.servers.isEmpty() ? board.used : found.servers};
}

// True for the thread whose fall is to be told, and to nobody else.
bool takeFall() {
    int nobody = 0;
    return callRecord().fall.taker.compare_exchange_strong(nobody, systemThread());
}

void fillFall(CrashKind how, int signal, void *context) {
    CrashRecord &fall = callRecord().fall;
    fall.how = how;
    fall.signal = signal;
    fall.slot = ownSlot();
    fall.where = whereabouts(fall.slot, context);
    fall.filled.store(true);
}

// The process is about to end at another thread's hands.
void waitForTheEnd() {
    if (callRecord().fall.taker.load() != systemThread())
        for (;;) pause();
}

// Lets the signal have the effect that it had before.
void passOn(int signal, const siginfo_t *info) {
    for (std::size_t i = 0; i < kFalls.size(); ++i)
        if (kFalls[i] == signal) sigaction(signal, &before[i], nullptr);
    if (info->si_code <= 0) raise(signal); // it was sent: nothing will cause it anew
}

void fell(int signal, siginfo_t *info, void *context) {
    if (getpid() == watched) {
        if (takeFall())
            fillFall(CrashKind::signal, signal, context);
        else
            waitForTheEnd();
    }
    passOn(signal, info);
}

void asked(int, siginfo_t *, void *context) {
    const int error = errno;
    if (const int number = ownSlot(); number >= 0) {
        CallSlot &slot = callRecord().slots[number];
        slot.answer = whereabouts(number, context);
        slot.answered.store(true);
    }
    errno = error;
}

[[noreturn]] void endFallen(CrashKind how, const std::string &text) {
    if (takeFall()) {
        std::snprintf(callRecord().fall.text, kLongestText, "%s", text.c_str());
        fillFall(how, 0, nullptr);
    } else {
        waitForTheEnd();
    }
    _exit(kCrashedStatus);
}

[[noreturn]] void terminated() { endFallen(CrashKind::exception, currentExceptionText()); }

void exiting() {
    if (getpid() == watched && callRecord().finished.load() == 0) endFallen(CrashKind::exit, "");
}

void onSignal(int signal, void (*handler)(int, siginfo_t *, void *), int flags, struct sigaction *previous) {
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
    char *plain = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
    std::string text = status == 0 ? plain : type->name();
    std::free(plain);
    return text;
}

} // namespace

void installSignalHandlers() {
    static const AlternateStack stack; // for good
    watched = getpid();
    searchStack(nullptr); // what goes through stacks may have to be loaded first
    for (std::size_t i = 0; i < kFalls.size(); ++i) {
        struct sigaction previous {};
        onSignal(kFalls[i], fell, 0, &previous);
        if (previous.sa_sigaction != fell) before[i] = previous; // a process that watches may have started this one
    }
    onSignal(callSiteSignal(), asked, SA_RESTART, nullptr);
}

void installCrashHandlers() {
    installSignalHandlers();
    std::set_terminate(terminated);
    std::atexit(exiting);
}

bool crashHandlersInstalled() { return watched != 0; }

int callSiteSignal() { return SIGRTMIN + 3; }

std::string currentExceptionText() {
    const std::string type = typeText();
    try {
        throw;
    } catch (const ModuleError &error) { // which tells where it was, too
        return error.what();
    } catch (const std::exception &error) {
        return "threw " + type + ": " + error.what();
    } catch (...) {
        return "threw " + type;
    }
}

} // namespace velm::host
