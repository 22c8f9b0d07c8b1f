#include "host/cli/command_line.h"

#include "host/base/names.h"
#include "host/cli/commands.h"
#include "host/cli/option_types.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>
#include <vector>

namespace velm::host {

namespace {

constexpr const char *kVersionText = "velm " VELM_VERSION;

std::string defaultModule() { return std::filesystem::path(programFile()).replace_filename("velm.p"); }

// Options of the program itself and of every command that needs the module.
void addCommon(CLI::App &app, ProgramOptions &program) {
    app.set_version_flag("--version", kVersionText);
    app.add_option("--module", program.module, "The module to load; velm.p beside this program by default")
        ->type_name("FILE");
}

void addGuard(CLI::App &command, GuardOptions &guard) {
    constexpr double kLongest = 1e6;
    command
        .add_option("--call-limit", guard.callLimit,
                    "Seconds after which a call of the module that has not returned, or a sample that\n"
                    "is not finished, counts as hung; 0 for no limit")
        ->check(numberFrom(0, kLongest))
        ->capture_default_str()
        ->type_name("SECONDS");
    command.add_flag("!--unguarded", guard.on,
                     "Run the module in this process, for a debugger: when it crashes, so does velm");
}

// The parser library only says that a command is missing, and does not mention a misspelt one.
[[noreturn]] void failWithoutCommand(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands({})) names.push_back(command->get_name());
    const std::vector<std::string> rest = app.remaining();
    if (rest.empty()) throw UsageError(fmt::format("a command is needed: {}", fmt::join(names, ", ")));
    const std::string &word = rest.front();
    if (word.starts_with('-')) throw UsageError(fmt::format("there is no option {}", word));
    throw UsageError(fmt::format("there is no command {}{}", inQuotes(word), suggestion(word, names)));
}

// The parser library lists all unknown words, the last one first, without suggestions. This names the first unknown
// option and the nearest right one.
[[noreturn]] void failAtLeftWords(const CLI::App &app, const CLI::ParseError &error, int status) {
    for (std::string word : app.remaining(true)) {
        if (!word.starts_with('-')) continue;
        word.resize(std::min(word.find('='), word.size()));
        std::vector<std::string> known;
        for (const CLI::App *command : app.get_subcommands())
            for (const CLI::Option *option : command->get_options())
                for (const std::string &name : option->get_lnames()) known.push_back("--" + name);
        throw UsageError(fmt::format("there is no option {}{}", word, didYouMean(word, known)), status);
    }
    throw UsageError(error.what(), status);
}

// A command and what the parser knows about it.
struct Declared {
    const Command *command;
    CLI::App *app;
    std::any record;
};

Declared declareCommand(const Command &command, CLI::App &app, ProgramOptions &program) {
    Declared declared{.command = &command, .app = app.add_subcommand(command.name, command.help), .record = {}};
    declared.record = command.declare(*declared.app, program);
    if (command.needsModule) {
        addCommon(*declared.app, program);
        addGuard(*declared.app, program.guard);
    } else {
        declared.app->set_version_flag("--version", kVersionText);
    }
    return declared;
}

} // namespace

std::string programFile() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? "velm" : program.string();
}

std::optional<CommandLine> parseCommandLine(int argc, const char *const *argv, std::ostream &out) {
    CommandLine line{.command = nullptr,
                     .program = {.module = defaultModule(),
                                 .guard = {},
                                 .reading = {},
                                 .log = {},
                                 .words = {argv + std::min(argc, 1), argv + argc}},
                     .record = {}};
    CLI::App app("Loads a module of shading nodes, lists its nodes, and renders scenes with them.", "velm");
    app.require_subcommand(1);
    addCommon(app, line.program);
    std::vector<Declared> all;
    for (const Command *command : allCommands()) all.push_back(declareCommand(*command, app, line.program));
    const auto chosen = [&] {
        return std::ranges::find_if(all, [](const Declared &one) { return one.app->parsed(); });
    };

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &asked) { // --help, --version
        app.exit(asked, out, out);
        return std::nullopt;
    } catch (const CLI::ParseError &error) {
        if (dynamic_cast<const CLI::RequiredError *>(&error) && app.get_subcommands().empty()) failWithoutCommand(app);
        const int status = chosen() == all.end() ? int{kExitUsage} : chosen()->command->usageStatus;
        if (dynamic_cast<const CLI::ExtrasError *>(&error)) failAtLeftWords(app, error, status);
        throw UsageError(error.what(), status);
    }
    line.command = chosen()->command;
    line.record = chosen()->record;
    return line;
}

} // namespace velm::host
