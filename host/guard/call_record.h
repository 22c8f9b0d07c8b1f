// The call record: what this process is doing with a module. It can lie in memory shared with another process, which
// can still read it after this one has crashed. It holds the call into the module that each thread is in, a progress
// count for each thread, and the cause of a crash. Evaluations of samples are not noted, since that would cost time for
// each sample; crash_handler.h finds them on the thread's stack when they are needed.
#pragma once

#include "host/base/limits.h"
#include "host/guard/alternate_stack.h"
#include "module/host.h"

#include <cxxabi.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

// A function that catches abi::__forced_unwind, which the C library throws when a thread is ended, catches a reference
// to nothing: the undefined-behaviour sanitizer is not to mind.
#define VELM_FORCED_UNWIND __attribute__((no_sanitize("null")))

namespace velm::host {

constexpr int kMaxServers = 256;   // servers that get a number
constexpr int kLongestServer = 96; // bytes of a server's name, including the terminating zero
constexpr int kLongestPath = 4096; // likewise, of a file's path
constexpr int kLongestText = 1000; // likewise, of the description of an exception
constexpr int kSlots = kMostWorkers + 1;
constexpr int kModuleItself = -1; // used as a server's number: the module as a whole
constexpr int kHostServer = -2;   // likewise: one of the host's own servers, whose calls are not noted

// A set of servers, by number.
struct ServerSet {
    std::uint64_t words[kMaxServers / 64];

    void add(int number) { words[number / 64] |= std::uint64_t{1} << number % 64; }
    bool has(int number) const { return (words[number / 64] >> number % 64 & 1) != 0; }
    bool isEmpty() const;
};

// Where a thread is: whether in the module and, if so, in which call. `servers` holds the server that was called;
// several if it is known only to be one of them; none if the call was to the module itself.
struct CallSite {
    bool inModule;
    const char *call; // a string literal; null outside of the module
    ServerSet servers;
};

// What one thread is doing. Calls are named by string literals of this program. Their addresses are also valid in the
// process that reads the record, since one of the two was forked from the other. Each slot has a cache line of its own,
// since render threads count their samples in it.
struct alignas(64) CallSlot {
    std::atomic<std::uint64_t> steps; // counts calls begun, calls ended and samples finished
    std::atomic<const char *> call;   // null: in no noted call
    std::atomic<const char *> last;   // the most recent call, whether it has ended or not
    std::atomic<int> server;          // the server that is called
    std::atomic<int> process;         // of the render thread that uses the slot; valid while `thread` is set
    std::atomic<int> thread;          // the system's id of the render thread that uses the slot; 0: none does
    std::atomic<bool> inDialog;       // the call that was noted last is waiting for a person; see DialogScope
    std::atomic<bool> answered;       // the thread has answered callSiteSignal()
    CallSite answer;                  // valid while `answered` is set
};

// threadExit: a render thread was ended by pthread_exit; trap: by a floating-point trap, which the host never turns on.
enum class CrashKind : int { none, signal, exception, exit, threadExit, trap, last = trap };

// How the process crashed. If several threads crash, the first one fills in the record.
struct CrashRecord {
    std::atomic<int> thread;  // the system's id of the first thread to crash; 0: none has
    std::atomic<bool> filled; // everything below is valid
    CrashKind kind;
    int signal; // of CrashKind::signal
    int slot;   // of the thread that crashed; -1: neither the interface thread nor a render thread
    CallSite site;
    char text[kLongestText]; // of CrashKind::exception: "threw ", the type and the message
};

struct CallRecord {
    char module[kLongestPath];     // the file of the module that was loaded most recently
    char unfinished[kLongestPath]; // a file that is incomplete as yet and to be removed after a crash; empty: none
    int serverCount;
    char servers[kMaxServers][kLongestServer];
    ServerSet used;         // the servers that the interface thread has called so far
    CallSlot slots[kSlots]; // 0: the interface thread; n + 1: render thread n
    CrashRecord crash;
    std::atomic<int> finished; // one more than the exit status of the work; 0: the work has not ended
};

// The call record of this process: private to it until useCallRecord() replaces it, once and for all. `shared` must
// live as long as the process.
CallRecord &callRecord();
void useCallRecord(CallRecord *shared); // [before all threads]
// Makes sure that processes forked from this one share its call record with it. MachineError when there is no memory.
// [interface thread; not while rendering]
void shareCallRecord();

// Notes the file of the module that is about to be loaded. A longer path than kLongestPath is cut. [interface thread]
void nameModule(const std::string &file);
// The name of that file, whatever has become of the record. [interface thread]
const std::string &namedModule();

// The number of the module's server of this name. A new name gets the next free number, or kModuleItself if there is
// none. Names count as equal if their first kLongestServer - 1 bytes are. [interface thread]
int numberOfServer(const char *name);

// Notes in the calling thread's slot that the thread is in a call into the module, for as long as the scope lasts.
// Scopes nest. `call` must be a string literal.
class CallScope {
  public:
    CallScope(int server, const char *call); // a server's number, kModuleItself or kHostServer
    ~CallScope();
    CallScope(const CallScope &) = delete;
    CallScope &operator=(const CallScope &) = delete;

  private:
    CallSlot *slot_ = nullptr; // null: a call of the host's own server, which is not noted
    const char *outerCall_ = nullptr;
    int outerServer_ = 0;
};

// Notes that the calling thread's call into the module is waiting for a person, for as long as the scope lasts: the
// host shows a dialog on the module's behalf. Meanwhile the thread counts as outside of the module. The time does not
// count towards the call limit (see guarded.h), and a crash is not blamed on the module. Calls that the dialog makes
// into modules are noted as usual. Scopes nest. [interface thread]
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

// The server in whose call the calling thread is: its number or kModuleItself; kHostServer outside of noted calls.
int serverInCall();

// Ends this process with a crash record that says that the module has ended the calling thread. Returns if crash
// handlers are not installed.
void endAfterThreadExit();

// Makes the calling thread use the slot of the render thread with this index, for as long as the scope lasts.
class SlotScope {
  public:
    explicit SlotScope(int threadIndex); // 0 to kMostWorkers - 1
    ~SlotScope();
    SlotScope(const SlotScope &) = delete;
    SlotScope &operator=(const SlotScope &) = delete;

    // Calls `work`. If the module ends the thread meanwhile (pthread_exit), the process ends with a crash record of
    // that, since the thread's part of the work would never be done. Without crash handlers, the thread just ends.
    template <class Work>
    VELM_FORCED_UNWIND void run(Work work) {
        try {
            work();
        } catch (abi::__forced_unwind &) {
            endAfterThreadExit();
            throw;
        }
    }

    // Counts a finished sample as progress. Costs one store.
    void step() { slot_.steps.store(slot_.steps.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed); }

  private:
    CallSlot &slot_;
    std::optional<AlternateStack> stack_; // if crash handlers are installed
};

// The system's id of the calling thread. May be called in signal handlers.
int systemThread();
// The index of the calling thread's slot; -1 for a thread that is neither the interface thread nor a render thread. May
// be called in signal handlers.
int ownSlot();

// Names a file that is to be removed if this process ends before the scope does. There can be one at a time. A path of
// kLongestPath bytes or more is ignored.
class UnfinishedFile {
  public:
    explicit UnfinishedFile(const std::string &path);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile &) = delete;
    UnfinishedFile &operator=(const UnfinishedFile &) = delete;
};

// Names the servers of a set for a message: `server "Velm Counter"`, `one of the servers "A", "B"` or, for the empty
// set, `the module`.
std::string serversText(const CallRecord &record, const ServerSet &servers);

} // namespace velm::host
