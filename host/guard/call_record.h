// What this process is doing with a module, where another process can read it, whatever becomes of this one: the calls
// into the module that each thread is in, how far the work has come, and how it ended when it ended badly. Samples are
// not noted: what a render thread was evaluating is found out from its stack when somebody asks, see witness.h.
#pragma once

#include "host/guard/alternate_stack.h"
#include "module/host.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace velm::host {

constexpr int kMaxServers = 256;   // servers that have a number
constexpr int kLongestServer = 96; // bytes of a server's name, with its end
constexpr int kLongestPath = 4096; // likewise of a file's
constexpr int kLongestText = 1000; // likewise of what is told of a fall
constexpr int kSlots = kMaxThreads + 1;
constexpr int kModuleItself = -1; // in place of a server's number: the module as a whole
constexpr int kHostServer = -2;   // likewise: a server of the host's, whose calls are not noted

// Servers by their numbers.
struct ServerSet {
    std::uint64_t words[kMaxServers / 64];

    void add(int number) { words[number / 64] |= std::uint64_t{1} << number % 64; }
    bool has(int number) const { return (words[number / 64] >> number % 64 & 1) != 0; }
    bool isEmpty() const;
};

// Where a thread is: in a module, in a call of one of these servers. None at all stands for the module itself.
struct CallSite {
    bool inModule;
    const char *call; // a literal; null outside
    ServerSet servers;
};

// A thread's place. The calls are named by literals of this program, whose addresses hold in the process that reads
// them too. Each slot has a cache line of its own, since render threads count their samples in it.
struct alignas(64) CallSlot {
    std::atomic<std::uint64_t> steps; // calls begun and ended, samples finished
    std::atomic<const char *> call;   // null: in no noted call
    std::atomic<const char *> last;   // the call made last, ended or not
    std::atomic<int> server;          // of the call
    std::atomic<int> thread;          // the system's number of the render thread that has the slot; 0: none has it
    std::atomic<bool> inDialog;       // no call, since the last noted one waits for a person; see DialogScope
    std::atomic<bool> answered;       // the thread was asked where it is, and this is what it said
    CallSite answer;
};

enum class CrashKind : int { none, signal, exception, exit };

// How the process came to fall; the first fall counts.
struct CrashRecord {
    std::atomic<int> taker; // the system's number of the thread that fills it in; 0: nothing fell
    std::atomic<bool> filled;
    CrashKind how;
    int signal;
    int slot; // of the thread that fell; -1: neither the interface thread nor a render thread
    CallSite where;
    char text[kLongestText]; // of an exception: its type and what it says
};

struct CallRecord {
    char module[kLongestPath];     // the file of the module that was loaded last
    char unfinished[kLongestPath]; // a file that is being written and means nothing yet; empty: none
    int serverCount;
    char servers[kMaxServers][kLongestServer];
    ServerSet used;         // that the interface thread has called
    CallSlot slots[kSlots]; // 0: the interface thread; else one more than the number of the render thread
    CrashRecord fall;
    std::atomic<int> finished; // one more than the status that the work ended with; 0: it has not ended
};

// The record of this process: private until `useCallBoard` gives another, which is then this process's for good.
CallRecord &callRecord();
void useCallRecord(CallRecord *shared); // [before all threads]

// The file of the module that is about to be loaded. [interface thread]
void nameModule(const std::string &file);

// The number of a server of a module, by name; a name that is new gets the next one. kModuleItself when there are none
// left. [interface thread]
int numberOfServer(const char *name);

// Notes a call into the module, for as long as the scope lasts. `call` is a literal. Scopes nest.
class CallScope {
  public:
    CallScope(int server, const char *call); // a server's number, kModuleItself or kHostsOwn
    ~CallScope();
    CallScope(const CallScope &) = delete;
    CallScope &operator=(const CallScope &) = delete;

  private:
    CallSlot *slot_ = nullptr; // null: nothing is noted
    const char *outerCall_ = nullptr;
    int outerServer_ = 0;
};

// Notes that the call in which the calling thread is waits for a person, for as long as the scope lasts: the host shows
// a dialog on the module's behalf. Meanwhile the thread counts as outside of the module. The time does not count
// against the call limit (see guarded.h), and a crash is not blamed on the module. Calls that the dialog makes into
// modules are noted as usual. Scopes nest. [interface thread]
class DialogScope {
  public:
    DialogScope();
    ~DialogScope();
    DialogScope(const DialogScope &) = delete;
    DialogScope &operator=(const DialogScope &) = delete;

  private:
    CallSlot &slot_;
    const char *const outerCall_; // null: in no noted call
    const int outerServer_;
    const bool outerInDialog_;
};

// The server in whose call the calling thread is; kHostsOwn outside of all calls.
int serverInCall();

// The calling thread's place, for as long as it lives: of the render thread with that number.
class SlotScope {
  public:
    explicit SlotScope(int threadIndex); // 0 to kMaxThreads - 1
    ~SlotScope();
    SlotScope(const SlotScope &) = delete;
    SlotScope &operator=(const SlotScope &) = delete;

    // Something was finished: a sample. Costs one store.
    void step() { slot_.steps.store(slot_.steps.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }

  private:
    CallSlot &slot_;
    std::optional<AlternateStack> stack_; // where falls are watched for
};

// The system's number of the calling thread. May be asked in signal handlers.
int systemThread();
// The calling thread's slot; -1 for a thread that is neither the interface thread nor a render thread. May be asked in
// signal handlers.
int ownSlot();

// Names a file that is to be removed should this process end before the scope does. One at a time.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const std::string &path);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile &) = delete;
    UnfinishedFile &operator=(const UnfinishedFile &) = delete;
};

// "server "Velm Counter"", "one of the servers "A", "B"" or "the module".
std::string serversText(const CallRecord &board, const ServerSet &servers);

} // namespace velm::host
