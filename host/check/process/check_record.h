// What a check's process leaves where the process that started it can read it, whatever becomes of it: a record in
// shared memory with the call that each thread is making, and the verdict.
#pragma once

#include "host/check/process/outcome.h"
#include "host/guard/call_record.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace velm::host {

constexpr int kMostServers = 64; // nodes of one module that are checked
static_assert(kMostServers <= kMaxServers);

struct Blackboard : CallRecord {
    std::atomic<std::uint64_t> rounds[kSlots];
    std::atomic<bool> decided;
    Outcome outcome;
    char message[4000];
    char notes[4000]; // warnings
};

// The record of this process: private until `useBlackboard` gives another. Never null.
Blackboard &blackboard();
void useBlackboard(Blackboard *shared);

// A number that tells the turns of a check apart; shown with the last call.
void noteRound(std::uint64_t round);

// "node "Velm Counter", evaluate, render thread 3, round 17": the calls of the thread that fell, else of all threads
// that were in a call, else the last one.
std::string lastCalls(const Blackboard &board);

// Ends the check, from any thread and from any depth of calls: the first one to come counts.
[[noreturn]] void failCheck(const std::string &message);
[[noreturn]] void skipCheck(const std::string &why);
// Goes on, but the check does not pass without a word. The same text is kept once. [one thread at a time]
void warnCheck(const std::string &message);

// How a check ends in this process: by leaving it with this status, or, when reproducing, by SIGABRT.
constexpr int kDecidedStatus = 42;
void reproduceHere(bool here);

} // namespace velm::host
