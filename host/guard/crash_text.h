// Describes crashes and hangs for error messages: the module's file, the server, what happened, the call and the
// thread.
#pragma once

#include "host/guard/call_record.h"

#include <string>

namespace velm::host {

// What a signal means, in lower case: "segmentation fault".
std::string signalText(int signal);
// The name of a signal: "SIGSEGV"; "signal 40" for one without a name.
std::string signalName(int signal);

struct CrashText {
    std::string text; // "velm.p: server "Velm Counter" crashed (segmentation fault) in evaluate, thread 1"
    bool isOfModule;  // false: no code of the module was running, so that the module is not to blame
};

// Throws the text as a ModuleError, or as a MachineError if the module is not to blame.
[[noreturn]] void throwCrash(const CrashText &crash);

// All records are copies, made by copyRecord.

// Describes the end of a process that ended without setting `finished`. `record` is its call record, `status` the
// status that waitpid gave.
CrashText crashText(const CallRecord &record, int status);

// Describes where a process that still runs is hanging: in the call of the interface thread, else at the call site that
// a render thread answered, or is assumed to be at if it did not answer. Empty if no thread is in the module's code.
std::string hangText(const CallRecord &record);

// Describes where a process is that a signal has stopped: `server "Velm Counter" was stopped by SIGSTOP in create`.
CrashText stopText(const CallRecord &record, int signal);

// How a process ended, by the status that waitpid gave: "ended with status 7", "crashed (segmentation fault)".
std::string endText(int status);

// Says that the module of this file has overwritten the call record, so that its calls are unknown. `end` says how the
// process ended.
std::string overwrittenText(const std::string &module, const std::string &end);

} // namespace velm::host
