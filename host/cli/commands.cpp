#include "host/cli/commands.h"

namespace velm::host {

std::span<const Command *const> allCommands() {
#define VELM_COMMAND_ADDRESS(name) &name##Command,
    static constexpr const Command *kCommands[] = {VELM_COMMANDS(VELM_COMMAND_ADDRESS)};
#undef VELM_COMMAND_ADDRESS
    return kCommands;
}

} // namespace velm::host
