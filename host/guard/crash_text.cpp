#include "host/guard/crash_text.h"

#include "host/base/error.h"
#include "host/guard/crash_signals.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstring>

namespace velm::host {

std::string signalText(int signal) {
    const char *known = sigdescr_np(signal);
    std::string text = known ? known : "signal " + std::to_string(signal);
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

std::string signalName(int signal) {
    const char *name = sigabbrev_np(signal);
    return name ? fmt::format("SIG{}", name) : fmt::format("signal {}", signal);
}

namespace {

// Names the thread of a slot for a message. The interface thread, of slot 0, is not named.
std::string threadText(int slot) {
    if (slot == 0) return "";
    return slot < 0 ? ", on a thread of its own" : ", thread " + std::to_string(slot - 1);
}

std::string text(const CallRecord &record, const CallSite &site, const std::string &what, int slot) {
    return std::string(record.module) + ": " + serversText(record, site.servers) + ' ' + what + " in " + site.call +
           threadText(slot);
}

// What the record alone says of a thread that did not answer: the call that is noted in its slot; without one, an
// evaluation by any of the servers that have been called.
CallSite notedSite(const CallRecord &record, const CallSlot &slot) {
    if (const char *call = slot.call.load()) {
        CallSite site{.inModule = true, .call = call, .servers = {}};
        if (const int server = slot.server.load(); server >= 0) site.servers.add(server);
        return site;
    }
    return {.inModule = !record.used.isEmpty(), .call = "evaluate", .servers = record.used};
}

std::string whatHappened(const CrashRecord &crash) {
    switch (crash.kind) {
    case CrashKind::exception: return crash.text;
    case CrashKind::exit: return "ended the process by exit";
    case CrashKind::threadExit: return "ended the thread by pthread_exit";
    case CrashKind::trap: return "turned on floating-point traps, one of which ended the process,";
    default: return "crashed (" + signalText(crash.signal) + ')';
    }
}

// Whether any call of the module has begun.
bool hasRun(const CallRecord &record) {
    return std::ranges::any_of(record.slots, [](const CallSlot &slot) { return slot.steps.load() > 0; });
}

// For a crash outside the module's code. A module that has written beyond its memory often crashes the host later, so
// the message names the module as a possible cause.
std::string outsideText(const CallRecord &record, bool isCrash) {
    return isCrash && hasRun(record)
               ? fmt::format("; no code of {} was running, but it may have damaged memory before", record.module)
               : "; no code of the module was running";
}

CrashText recorded(const CallRecord &record) {
    const CrashRecord &crash = record.crash;
    const std::string what = whatHappened(crash);
    // A ModuleError: its message names the module and the call.
    if (crash.kind == CrashKind::exception && what.find(record.module) == 0) return {.text = what, .isOfModule = true};
    if (crash.site.inModule) return {.text = text(record, crash.site, what, crash.slot), .isOfModule = true};
    return {.text = what + threadText(crash.slot) + outsideText(record, crash.kind == CrashKind::signal),
            .isOfModule = false};
}

// For a process that ended without filling in the crash record: names the first thread that was in a call.
CrashText unrecorded(const CallRecord &record, const std::string &what) {
    for (int slot = 0; slot < kSlots; ++slot) {
        const bool isBusy = record.slots[slot].call.load() || record.slots[slot].thread.load() != 0;
        const CallSite site = isBusy ? notedSite(record, record.slots[slot]) : CallSite{};
        // Slot 0, so that no render thread is named: it may have been any of them.
        if (site.inModule) return {.text = text(record, site, what, 0), .isOfModule = true};
    }
    return {.text = what + "; no call of the module was in progress", .isOfModule = false};
}

// For a process to which a signal has happened that no handler has recorded.
CrashText signalled(const CallRecord &record, const std::string &what) {
    CrashText signalled = unrecorded(record, what);
    if (!signalled.isOfModule) signalled.text = fmt::format("{}: the process {}", record.module, signalled.text);
    return signalled;
}

bool isCrashSignal(int signal) { return std::ranges::find(kCrashSignals, signal) != kCrashSignals.end(); }

} // namespace

void throwCrash(const CrashText &crash) {
    if (crash.isOfModule) throw ModuleError(crash.text);
    throw MachineError(crash.text);
}

CrashText crashText(const CallRecord &record, int status) {
    if (record.crash.filled.load()) return recorded(record);
    if (WIFEXITED(status))
        return unrecorded(record, "ended the process with status " + std::to_string(WEXITSTATUS(status)));
    const int signal = WTERMSIG(status);
    if (signal == SIGKILL) return unrecorded(record, "was killed, perhaps because memory ran out,");
    if (isCrashSignal(signal)) {
        const std::string what = "crashed (" + signalText(signal) + ')';
        const CrashText crash = unrecorded(record, what);
        return crash.isOfModule ? crash : CrashText{.text = what + outsideText(record, true), .isOfModule = false};
    }
    return signalled(record, "was ended by " + signalName(signal));
}

CrashText stopText(const CallRecord &record, int signal) {
    return signalled(record, "was stopped by " + signalName(signal));
}

std::string endText(int status) {
    if (WIFEXITED(status)) return fmt::format("ended with status {}", WEXITSTATUS(status));
    const int signal = WTERMSIG(status);
    if (signal == SIGKILL) return "was ended";
    return isCrashSignal(signal) ? fmt::format("crashed ({})", signalText(signal))
                                 : "was ended by " + signalName(signal);
}

std::string overwrittenText(const std::string &module, const std::string &end) {
    return fmt::format("{}: the module has overwritten the host's record of its calls; the process {}", module, end);
}

std::string hangText(const CallRecord &record) {
    constexpr const char *kHangs = "hangs";
    if (record.slots[0].call.load()) return text(record, notedSite(record, record.slots[0]), kHangs, 0);
    for (int index = 1; index < kSlots; ++index) {
        const CallSlot &slot = record.slots[index];
        if (slot.thread.load() == 0) continue;
        const CallSite site = slot.answered.load() ? slot.answer : notedSite(record, slot);
        if (site.inModule) return text(record, site, kHangs, index);
    }
    return {};
}

} // namespace velm::host
