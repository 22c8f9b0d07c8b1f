// Finds out, in a process that crashes or hangs, which call of the module a thread was in. This costs nothing as long
// as all goes well: the call record or the stack of the thread is looked at only then. On the stack, a server is
// recognised by the start address of its `evaluate` function, as the unwind tables give it. Servers that share one
// `evaluate` function cannot be told apart.
#pragma once

#include "host/guard/call_record.h"

#include <string>

namespace velm::host {

// From now on, the first crash of this process is written to its call record, together with the thread's call site.
// Crashes are signals such as SIGSEGV, uncaught exceptions, and calls of `exit` before `callRecord().finished` is set.
// A signal then has the effect that it had before; the other two end the process with kCrashedStatus. Threads that get
// a SlotScope from now on answer callSiteSignal(). [interface thread; before there are other threads]
void installCrashHandlers();
// Installs only the signal handlers, including that of callSiteSignal(), or only the handler for calls of `exit`.
// [interface thread; before there are other threads]
void installSignalHandlers();
void installExitHandler();
// For a process that was forked from one that may have handlers: from now on, its crashes are recorded, too.
// [before all other threads of this process]
void installCrashHandlersOfWorker();
// Whether one of these functions has been called.
bool crashHandlersInstalled();

constexpr int kCrashedStatus = 42;

// The signal that asks a thread for its call site: its handler fills in `answer` in the thread's slot.
int callSiteSignal();

// Notes where the code of the loaded module lies in memory: the shared object that contains this address. Forgets the
// evaluate functions of an earlier module. [interface thread]
void noteModuleCode(const void *address);
// Notes the evaluate function of the server with this number. Numbers outside 0 to kMaxServers - 1 are ignored.
// [interface thread]
using EvaluateFunction = void (*)(void *, ShadingSample *, HostOutput *, HostNodeValue *);
void noteEvaluate(int server, EvaluateFunction function);

// Describes the exception that is being handled, as in "threw std::runtime_error: no luck". Of a ModuleError it is the
// message alone, which already names the call. Without an exception, it describes a call of std::terminate.
std::string currentExceptionText();

} // namespace velm::host
