// A bad end in words: the module's file, the server, what it did, the call and the thread.
#pragma once

#include "host/guard/call_record.h"

#include <optional>
#include <string>

namespace velm::host {

struct CrashText {
    std::string text; // "velm.p: server "Velm Counter" crashed (segmentation fault) in evaluate, thread 1"
    bool isOfModule;  // false: no code of the module was running
};

// Of a process that has ended, without `finished`, with that status of waitpid. Nothing for a signal that somebody sent
// to end it.
std::optional<CrashText> crashText(const CallRecord &board, int status);

// Of a process that goes on: the call of the interface thread, else what its render threads answered or what they are
// taken to be in. Empty when none of them is in the module's code.
std::string hangText(const CallRecord &board);

} // namespace velm::host
