#include "host/guard/crash_text.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <csignal>
#include <cstring>

namespace velm::host {

namespace {

std::string signalText(int signal) {
    const char *known = sigdescr_np(signal);
    std::string text = known ? known : "signal " + std::to_string(signal);
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

// Slots beyond the first are the render threads'.
std::string threadText(int slot) {
    if (slot == 0) return "";
    return slot < 0 ? ", on a thread of its own" : ", thread " + std::to_string(slot - 1);
}

std::string text(const CallRecord &board, const CallSite &where, const std::string &what, int slot) {
    return std::string(board.module) + ": " + serversText(board, where.servers) + ' ' + what + " in " + where.call +
           threadText(slot);
}

// What is known of a thread that does not tell: its noted call, and of one that evaluates samples no more than that.
CallSite noted(const CallRecord &board, const CallSlot &slot) {
    if (const char *call = slot.call.load()) {
        CallSite where{.inModule = true, .call = call, .servers = {}};
        if (const int server = slot.server.load(); server >= 0) where.servers.add(server);
        return where;
    }
    return {.inModule = !board.used.isEmpty(), .call = "evaluate", .servers = board.used};
}

std::string whatHappened(const CrashRecord &fall) {
    switch (fall.how) {
    case CrashKind::exception: return fall.text;
    case CrashKind::exit: return "ended the process by exit";
    default: return "crashed (" + signalText(fall.signal) + ')';
    }
}

CrashText recorded(const CallRecord &board) {
    const CrashRecord &fall = board.fall;
    const std::string what = whatHappened(fall);
    if (fall.how == CrashKind::exception && what.find(board.module) == 0) // told by whoever caught it first
        return {.text = what, .isOfModule = true};
    if (fall.where.inModule) return {.text = text(board, fall.where, what, fall.slot), .isOfModule = true};
    return {.text = what + threadText(fall.slot) + "; no code of the module was running", .isOfModule = false};
}

// Of a process that left no record: the calls that were noted.
CrashText unrecorded(const CallRecord &board, const std::string &what) {
    for (int slot = 0; slot < kSlots; ++slot) {
        const bool isIn = board.slots[slot].call.load() || board.slots[slot].thread.load() != 0;
        const CallSite where = isIn ? noted(board, board.slots[slot]) : CallSite{};
        // Which of the render threads it was is not known.
        if (where.inModule) return {.text = text(board, where, what, 0), .isOfModule = true};
    }
    return {.text = what + "; no call of the module was under way", .isOfModule = false};
}

bool isFall(int signal) {
    constexpr std::array kFalls = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};
    return std::ranges::find(kFalls, signal) != kFalls.end();
}

} // namespace

std::optional<CrashText> crashText(const CallRecord &board, int status) {
    if (board.fall.filled.load()) return recorded(board);
    if (WIFEXITED(status))
        return unrecorded(board, "ended the process with status " + std::to_string(WEXITSTATUS(status)));
    const int signal = WTERMSIG(status);
    if (signal == SIGKILL) return unrecorded(board, "was killed, perhaps for want of memory,");
    if (isFall(signal)) return unrecorded(board, "crashed (" + signalText(signal) + ')');
    return std::nullopt;
}

std::string hangText(const CallRecord &board) {
    constexpr const char *kHangs = "hangs";
    if (board.slots[0].call.load()) return text(board, noted(board, board.slots[0]), kHangs, 0);
    for (int number = 1; number < kSlots; ++number) {
        const CallSlot &slot = board.slots[number];
        if (slot.thread.load() == 0) continue;
        const CallSite where = slot.answered.load() ? slot.answer : noted(board, slot);
        if (where.inModule) return text(board, where, kHangs, number);
    }
    return {};
}

} // namespace velm::host
