// What of a module stands on the calling thread's stack.
#pragma once

#include "host/guard/call_record.h"

namespace velm::host {

struct StackFinding {
    bool inModule;     // some code of the module is running
    ServerSet servers; // whose evaluation it is, the innermost one: one server; several, where the stack does not tell
                       // which of them; none, where it tells nothing
};

// Goes through the stack from the inside out. `context` is a signal handler's third argument, or null. May be called in
// signal handlers; allocates nothing but perhaps the first time.
StackFinding searchStack(void *context);

} // namespace velm::host
