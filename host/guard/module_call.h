// Wraps the host's calls into a module: notes them in the call record, turns what they throw into ModuleErrors, and
// puts back what they change in the process.
#pragma once

#include "host/guard/call_record.h"

#include <exception>
#include <optional>
#include <string>

namespace velm::host {

// Replaces the exception that is being handled by a ModuleError that names the server and the call. Rethrows it
// unchanged if it is already a ModuleError, from a call inside this one, or if `server` is kHostServer.
[[noreturn]] void throwModuleError(int server, const char *call);

// For destructors, from which nothing can be thrown: ends this process because of an error of the module. With crash
// handlers, the error becomes the crash record's text; without, it is printed.
[[noreturn]] void endByModuleError(const std::exception &error);

// Puts back the settings that a call has changed; see process_settings.h.
class CallSettings {
  public:
    explicit CallSettings(int server) : server_(server) {}
    ~CallSettings();
    CallSettings(const CallSettings &) = delete;
    CallSettings &operator=(const CallSettings &) = delete;

  private:
    int server_;
};

// Makes a call into a server or the module itself, and notes it while it lasts. Returns what `call` returns. Callbacks
// must not throw; what one throws all the same arrives as a ModuleError, and one that ends the thread ends the process.
// `server` and `name` are as in CallScope. Evaluations of samples are not called this way, see call_record.h.
template <class Call>
VELM_FORCED_UNWIND auto callModule(int server, const char *name, Call call) -> decltype(call()) {
    const CallScope noted(server, name);
    const CallSettings settings(server);
    try {
        return call();
    } catch (abi::__forced_unwind &) {
        endAfterThreadExit();
        throw;
    } catch (...) {
        throwModuleError(server, name);
    }
}

// A copy of a text that a module has given; empty for null. A text beyond kLongestModuleText bytes is cut, and ends
// with "...". To be called while the call is noted that has given it: reading the text may crash.
constexpr std::size_t kLongestModuleText = 1000;
std::string moduleText(const char *text);

// Makes a call that returns an error, as callModule does. Returns a copy of the error; nothing if there is none.
template <class Call>
std::optional<std::string> callForError(int server, const char *name, Call call) {
    return callModule(server, name, [&]() -> std::optional<std::string> {
        const char *error = call();
        return error ? std::optional(moduleText(error)) : std::nullopt;
    });
}

} // namespace velm::host
