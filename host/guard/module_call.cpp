#include "host/guard/module_call.h"

#include "host/base/error.h"
#include "host/guard/crash_handler.h"
#include "host/guard/process_settings.h"

#include <fmt/format.h>

#include <cstring>

namespace velm::host {

void throwModuleError(int server, const char *call) {
    if (server == kHostServer) throw;
    try {
        throw;
    } catch (const ModuleError &) {
        throw;
    } catch (...) {
        ServerSet servers{};
        if (server >= 0) servers.add(server);
        const CallRecord &record = callRecord();
        throw ModuleError(
            fmt::format("{}: {} {} in {}", record.module, serversText(record, servers), currentExceptionText(), call));
    }
}

CallSettings::~CallSettings() {
    if (server_ != kHostServer) putBackAfterCall();
}

std::string moduleText(const char *text) {
    if (!text) return {};
    const std::size_t length = strnlen(text, kLongestModuleText + 1);
    if (length <= kLongestModuleText) return {text, length};
    return std::string(text, kLongestModuleText) + "...";
}

} // namespace velm::host
