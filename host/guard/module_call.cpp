#include "host/guard/module_call.h"

#include "host/base/error.h"
#include "host/guard/crash_handler.h"

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
        throw ModuleError(std::string(record.module) + ": " + serversText(record, servers) + ' ' +
                          currentExceptionText() + " in " + call);
    }
}

} // namespace velm::host
