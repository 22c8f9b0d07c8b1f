#include "host/check/process/check_record.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velm::host {

namespace {

Blackboard ownBoard{};
Blackboard *board = &ownBoard;
bool reproducing = false;

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
    return text + ", round " + std::to_string(from.rounds[index].load(kRelaxed));
}

} // namespace

Blackboard &blackboard() { return *board; }
void useBlackboard(Blackboard *shared) {
    board = shared;
    useCallRecord(shared);
}

void noteRound(std::uint64_t round) { board->rounds[std::max(0, ownSlot())].store(round, kRelaxed); }

std::string lastCalls(const Blackboard &from) {
    std::string calls;
    const CrashRecord &fall = from.fall;
    const int fallen = fall.filled.load() ? std::max(0, fall.slot) : -1;
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

} // namespace velm::host
