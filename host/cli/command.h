// What a command of the program is: its name, its options, and what it does.
#pragma once

#include "host/cli/run.h"
#include "host/guard/guarded.h"
#include "host/io/reader_process.h"

#include <any>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace velm::host {

// Options that take effect around a command's own work, for all commands that have them; each command has its others in
// a record of its own.
struct ProgramOptions {
    std::string module;             // the file of the module
    GuardOptions guard;             // of commands that load the module
    ReadLimits reading;             // of commands that read meshes or images
    std::string log;                // the file of the log, to which errors are added; empty: none
    std::vector<std::string> words; // of the command line as given, without the program's name
};

// One command. Its file ends with its definition by `makeCommand`.
struct Command {
    const char *name;
    const char *help; // a line
    // It loads the module. It then runs in a guarded process of its own, and has the options --module, --call-limit
    // and --unguarded.
    bool needsModule;
    int usageStatus; // the exit status where its command line is wrong

    // Declares the command's options and positional arguments, and gives the record that parsing fills in.
    std::any (*declare)(CLI::App &app, ProgramOptions &program);
    // Does the work and gives the exit status. Errors are thrown: UsageError, InputError, MachineError, ModuleError.
    int (*run)(const ProgramOptions &program, const std::any &record, std::ostream &out, std::ostream &err);
};

struct CommandFacts {
    const char *name, *help;
    bool needsModule = true;
    int usageStatus = kExitUsage;
};

// A command whose options are a record `Options`: `declareOptions(app, program, options)` binds them to command-line
// options, `runCommand(program, options, out, err)` does the work.
template <class Options, void (*declareOptions)(CLI::App &, ProgramOptions &, Options &),
          int (*runCommand)(const ProgramOptions &, const Options &, std::ostream &, std::ostream &)>
constexpr Command makeCommand(const CommandFacts &facts) {
    return {
        .name = facts.name,
        .help = facts.help,
        .needsModule = facts.needsModule,
        .usageStatus = facts.usageStatus,
        .declare =
            [](CLI::App &app, ProgramOptions &program) {
                auto options = std::make_shared<Options>();
                declareOptions(app, program, *options);
                return std::any(std::move(options));
            },
        .run =
            [](const ProgramOptions &program, const std::any &record, std::ostream &out, std::ostream &err) {
                return runCommand(program, *std::any_cast<const std::shared_ptr<Options> &>(record), out, err);
            },
    };
}

} // namespace velm::host
