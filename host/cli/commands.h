// All commands of the program. A new command is a file that defines it and a row here.
#pragma once

#include "host/cli/command.h"

#include <span>

namespace velm::host {

// In the order in which the help lists them: row(NAME) stands for the constant NAMECommand.
#define VELM_COMMANDS(row)                                                                                             \
    row(nodes) row(show) row(render) row(bake) row(info) row(convert) row(check) row(compare) row(pack) row(unpack)    \
        row(files) row(archive) row(farm) row(merge)

#define VELM_DECLARE_COMMAND(name) extern const Command name##Command;
VELM_COMMANDS(VELM_DECLARE_COMMAND)
#undef VELM_DECLARE_COMMAND

// [any thread]
std::span<const Command *const> allCommands();

} // namespace velm::host
