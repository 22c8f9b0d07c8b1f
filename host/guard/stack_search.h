// Looks for the module's functions on the calling thread's stack.
#pragma once

#include "host/guard/call_record.h"

namespace velm::host {

struct StackFinding {
    bool inModule;     // code of the module is on the stack
    ServerSet servers; // the servers whose evaluation may be the innermost one: one server; several if the stack cannot
                       // tell them apart; none if it gives no indication
};

// Walks the stack from the innermost frame outwards. `context` is the third argument of a signal handler, or null
// outside of one. May be called in signal handlers, except for the first time, when it may allocate memory.
StackFinding searchStack(void *context);

} // namespace velm::host
