// Wraps the host's calls into a module: notes them in the call record, and turns what they throw into ModuleErrors.
#pragma once

#include "host/guard/call_record.h"

namespace velm::host {

// Replaces the exception that is being handled by a ModuleError that names the server and the call. Rethrows it
// unchanged if it is already a ModuleError, from a call inside this one, or if `server` is kHostServer.
[[noreturn]] void throwModuleError(int server, const char *call);

// Makes a call into a server or the module itself, and notes it while it lasts. Returns what `call` returns. Callbacks
// must not throw; what one throws all the same arrives as a ModuleError. `server` and `name` are as in CallScope.
// Evaluations of samples are not called this way, see call_record.h.
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
