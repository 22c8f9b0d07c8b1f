// Finding out, in the process that falls or hangs, which call of a module it was in. It costs nothing while all is
// well: the stack of the thread in question tells it. A module's functions are known by the address at which they
// start, as the tables for exceptions give it; so that exactness asks for one `evaluate` function for each server.
#pragma once

#include "host/guard/call_record.h"

#include <string>

namespace velm::host {

// From now on, falls of this process are put on its board with the thread's whereabouts, and then go on as they would
// have: signals that end programs, exceptions that nobody catches, and `exit` before `callBoard().finished` is set,
// which ends the process with kFallenStatus. Threads with a SlotScope from now on answer `askThread`.
// [interface thread; before all others]
void installCrashHandlers();
// The signals alone.
void installSignalHandlers();
bool crashHandlersInstalled();

constexpr int kCrashedStatus = 42;

// The signal at which a thread of another process that watches tells where it is.
int callSiteSignal();

// Where the code of the loaded module stands: the object that has this address in it. [interface thread]
void noteModuleCode(const void *address);
// A server's evaluation, by the server's number; other numbers are passed over. [interface thread]
using EvaluateFunction = void (*)(void *, ShadingSample *, HostOutput *, HostNodeValue *);
void noteEvaluate(int server, EvaluateFunction function);

// What of an exception is told: "threw std::runtime_error: no luck". To be called where one is being handled.
std::string currentExceptionText();

} // namespace velm::host
