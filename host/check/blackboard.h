// What a check's process leaves where the process that started it can read it, whatever becomes of it: a record in
// shared memory with the call that each thread is making, and the verdict.
#pragma once

#include "host/check/check.h"
#include "module/host.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace velm {

constexpr int kMostServers = 64;   // nodes of one module that are checked
constexpr int kLongestServer = 96; // bytes of a server's name, with its end
constexpr int kSlots = kMaxThreads + 1;

// The calls are named by literals of this program, whose addresses hold in the process that reads them too.
struct CallSlot {
    std::atomic<const char *> call; // null: in no call
    std::atomic<const char *> last; // the call made last, ended or not
    std::atomic<int> server;
    std::atomic<std::uint64_t> round;
};

struct Blackboard {
    int serverCount;
    char servers[kMostServers][kLongestServer];
    CallSlot slots[kSlots];  // 0: the interface thread; else one more than the number of the render thread
    std::atomic<int> fallen; // one more than the slot of the thread that fell; 0: none
    std::atomic<bool> decided;
    Outcome outcome;
    char message[4000];
    char notes[4000]; // warnings
};

// The record of this process: private until `useBlackboard` gives another. Never null.
Blackboard &blackboard();
void useBlackboard(Blackboard *shared);

// The calling thread's place, for as long as it lives: of the render thread with that number.
class SlotScope {
  public:
    explicit SlotScope(int threadIndex);
    ~SlotScope();
    SlotScope(const SlotScope &) = delete;
    SlotScope &operator=(const SlotScope &) = delete;
};

// Notes a call into the module, for as long as the scope lasts. `call` is a literal. Scopes nest.
class CallScope {
  public:
    CallScope(int server, const char *call);
    ~CallScope();
    CallScope(const CallScope &) = delete;
    CallScope &operator=(const CallScope &) = delete;

  private:
    CallSlot &slot_;
    const char *outerCall_;
    int outerServer_;
};

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

// Names the thread that falls by SIGSEGV, SIGBUS, SIGFPE, SIGILL or SIGABRT. Sanitizers have their own ways: nothing
// is done under them.
void watchSignals();

} // namespace velm
