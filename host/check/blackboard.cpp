#include "host/check/blackboard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velm {

namespace {

Blackboard ownBoard{};
Blackboard *board = &ownBoard;
bool reproducing = false;
thread_local int slotIndex = 0;

constexpr auto kRelaxed = std::memory_order_relaxed; // the record must not order what threads do

void copyText(char *to, std::size_t size, const std::string &text) { std::snprintf(to, size, "%s", text.c_str()); }

[[noreturn]] void decide(Outcome outcome, const std::string &message) {
    if (!board->decided.exchange(true)) {
        board->outcome = outcome;
        copyText(board->message, sizeof board->message, message);
    } else {
        pause(); // another thread is about to end the process
    }
    if (reproducing) {
        std::fprintf(stderr, "%s: %s\n  last call: %s\n", outcomeName(outcome), message.c_str(),
                     lastCalls(*board).c_str());
        if (outcome == Outcome::fail) std::abort();
        _exit(0);
    }
    _exit(kDecidedStatus);
}

std::string callText(const Blackboard &from, int index, const char *call) {
    const CallSlot &slot = from.slots[index];
    std::string text;
    if (const int server = slot.server.load(kRelaxed); server >= 0 && server < from.serverCount)
        text += "node \"" + std::string(from.servers[server]) + "\", ";
    text += call;
    text += index == 0 ? ", interface thread" : ", render thread " + std::to_string(index - 1);
    return text + ", round " + std::to_string(slot.round.load(kRelaxed));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void fell(int signal) {
    board->fallen.store(slotIndex + 1, kRelaxed);
    std::signal(signal, SIG_DFL);
    raise(signal);
}
#endif

} // namespace

Blackboard &blackboard() { return *board; }
void useBlackboard(Blackboard *shared) { board = shared; }

SlotScope::SlotScope(int threadIndex) { slotIndex = threadIndex + 1; }
SlotScope::~SlotScope() { slotIndex = 0; }

CallScope::CallScope(int server, const char *call)
    : slot_(board->slots[slotIndex]), outerCall_(slot_.call.load(kRelaxed)), outerServer_(slot_.server.load(kRelaxed)) {
    slot_.server.store(server, kRelaxed);
    slot_.last.store(call, kRelaxed);
    slot_.call.store(call, kRelaxed);
}

CallScope::~CallScope() {
    slot_.call.store(outerCall_, kRelaxed);
    if (outerCall_) slot_.server.store(outerServer_, kRelaxed);
}

void noteRound(std::uint64_t round) { board->slots[slotIndex].round.store(round, kRelaxed); }

std::string lastCalls(const Blackboard &from) {
    std::string calls;
    const int fallen = from.fallen.load() - 1;
    for (int i = 0; i < kSlots; ++i) {
        const char *call = from.slots[i].call.load(kRelaxed);
        if (!call || (fallen >= 0 && fallen != i)) continue;
        calls += (calls.empty() ? "" : "; ") + callText(from, i, call);
    }
    if (!calls.empty()) return calls;
    const int index = fallen >= 0 ? fallen : 0;
    const char *last = from.slots[index].last.load(kRelaxed);
    return last ? "after " + callText(from, index, last) : "before any call";
}

void failCheck(const std::string &message) { decide(Outcome::fail, message); }
void skipCheck(const std::string &why) { decide(Outcome::skip, why); }

void warnCheck(const std::string &message) {
    if (std::strstr(board->notes, message.c_str())) return;
    const std::size_t used = std::strlen(board->notes);
    copyText(board->notes + used, sizeof board->notes - used, (used > 0 ? "; " : "") + message);
}

void reproduceHere(bool here) { reproducing = here; }

void watchSignals() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // A stack of its own, for what falls because its stack ran out.
    static char stack[1 << 16];
    stack_t other{};
    other.ss_sp = stack;
    other.ss_size = sizeof stack;
    sigaltstack(&other, nullptr);
    struct sigaction action {};
    action.sa_handler = fell;
    action.sa_flags = SA_ONSTACK;
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) sigaction(signal, &action, nullptr);
#endif
}

} // namespace velm
