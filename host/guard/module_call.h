// The host's calls into modules.
#pragma once

#include "host/guard/call_record.h"

namespace velm::host {

// Turns the exception that is being handled into a ModuleError that tells of the call; one that is a ModuleError
// already, of a call inside this one, is thrown on, and so is whatever a server of the host's throws.
[[noreturn]] void throwModuleError(int server, const char *call);

// Calls a server's callback, or the module itself: notes the call for as long as it lasts. What a callback throws,
// which none should, arrives as a ModuleError. `server` as in CallScope. Not for evaluations: see witness.h.
template <class Call>
auto callModule(int server, const char *name, Call call) -> decltype(call()) {
    const CallScope noted(server, name);
    try {
        return call();
    } catch (...) {
        throwModuleError(server, name);
    }
}

} // namespace velm::host
