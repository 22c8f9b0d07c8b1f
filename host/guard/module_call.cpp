#include "host/guard/module_call.h"

#include "host/error.h"
#include "host/guard/witness.h"

namespace velm {

void throwModuleError(int server, const char *call) {
    if (server == kHostsOwn) throw;
    try {
        throw;
    } catch (const ModuleError &) {
        throw;
    } catch (...) {
        ServerSet servers{};
        if (server >= 0) servers.add(server);
        const CallBoard &board = callBoard();
        throw ModuleError(std::string(board.module) + ": " + serversText(board, servers) + ' ' +
                          currentExceptionText() + " in " + call);
    }
}

} // namespace velm
