// The record of a check's process in shared memory: the call that each thread is making, and the outcome. The process
// that started it reads the record even after a crash or a hang.
#pragma once

#include "host/check/process/outcome.h"
#include "host/guard/call_record.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace velm::host {

constexpr int kMostServers = 64; // nodes of one module that are checked; any further nodes are ignored
static_assert(kMostServers <= kMaxServers);

struct CheckRecord : CallRecord {
    std::atomic<std::uint64_t> rounds[kSlots]; // by call slot; see noteRound
    std::atomic<bool> decided;                 // whether `outcome` and `message` are final
    Outcome outcome;
    char message[4000];
    char notes[4000]; // warnings, joined by "; "
};

// A copy of the record of another process that is safe to read, whatever a module has written to it; see copyRecord.
// `isIntact` is set to whether the record was in order. [any thread]
std::unique_ptr<CheckRecord> copyOf(const CheckRecord &record, bool &isIntact);

// The record of this process: private until `useCheckRecord` replaces it by another, which has to outlive its use.
CheckRecord &checkRecord();               // [any thread]
void useCheckRecord(CheckRecord *shared); // [interface thread; before all other threads]

// Numbers the repetitions inside a check; the number is reported with the last call. [any thread]
void noteRound(std::uint64_t round);

// Describes the calls in progress: "node "Velm Counter", evaluate, render thread 3, round 17". After a crash it is the
// call of the crashed thread; otherwise those of all threads inside a call, else the call made last. The record is a
// copy, or that of this process. [any thread]
std::string lastCalls(const CheckRecord &record);

// Each ends the check, and with it the process, from any thread at any call depth. If several threads do so at once,
// the first one decides. [any thread]
[[noreturn]] void failCheck(const std::string &message);
[[noreturn]] void skipCheck(const std::string &reason);
// Records a warning and returns; a check with warnings that ends well has the outcome WARN. Repeated texts are recorded
// once. [one thread at a time]
void warnCheck(const std::string &message);

// The exit status of a process whose check has decided its outcome.
constexpr int kDecidedStatus = 42;
// While set, checks run in this process for a debugger: a failure prints its message and ends the process by SIGABRT,
// and a skipped check prints the reason and ends it with status 0. [interface thread]
void setReproducing(bool reproduces);

} // namespace velm::host
