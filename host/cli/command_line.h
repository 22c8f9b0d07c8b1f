// The command line as a whole: which command, and its options.
#pragma once

#include "host/cli/command.h"

#include <any>
#include <iosfwd>
#include <optional>
#include <string>

namespace velm::host {

// A command line that was understood.
struct CommandLine {
    const Command *command;
    ProgramOptions program;
    std::any record; // the command's options
};

// Parses the command line; or prints what --help or --version ask for to `out` and gives nothing. UsageError where it
// is wrong.
std::optional<CommandLine> parseCommandLine(int argc, const char *const *argv, std::ostream &out);

// The file of this program; "velm" if the system does not tell.
std::string programFile();

} // namespace velm::host
