// "velm check": whether a compiled module fulfils what hosts demand of it.
#include "host/base/error.h"
#include "host/check/levels/levels.h"
#include "host/check/report.h"
#include "host/cli/commands.h"
#include "host/cli/option_types.h"
#include "host/cli/output_file.h"
#include "host/io/files.h"

#include <CLI/CLI.hpp>
#include <ostream>

namespace velm::host {

namespace {

struct CheckCommandOptions {
    CheckOptions run;        // without the module, which is a program option
    bool reproduce = false;  // one check, in this process
    std::string json, junit; // files for the results; empty: none
};

void declareOptions(CLI::App &command, ProgramOptions &program, CheckCommandOptions &check) {
    command.add_option("MODULE", program.module, "The module to check; velm.p beside this program by default")
        ->type_name("");
    command.add_option("--level", check.run.level, "The highest level of checks that runs")
        ->check(CLI::Range(1, kHighestLevel))
        ->capture_default_str()
        ->type_name("N");
    command.add_option("--filter", check.run.filter, "Only checks whose \"name/server\" has this text in it")
        ->type_name("TEXT");
    command.add_option("--seed", check.run.seed, "The seed of all random choices")
        ->capture_default_str()
        ->type_name("N");
    constexpr double kLeastSeconds = 0.1, kMostSeconds = 1e6;
    command
        .add_option("--check-limit", check.run.limit, "Seconds after which a check that has not ended counts as hung")
        ->check(numberFrom(kLeastSeconds, kMostSeconds))
        ->capture_default_str()
        ->type_name("SECONDS");
    constexpr double kLeastMinutes = 1e-6, kMostMinutes = 1e6;
    CLI::Option *minutes = command
                               .add_option("--minutes", check.run.minutes,
                                           "How long level 10 goes on with new seeds, from the start of all checks")
                               ->check(numberFrom(kLeastMinutes, kMostMinutes))
                               ->type_name("N");
    command
        .add_flag("--reproduce", check.reproduce,
                  "Run one check in this process, for a debugger: no limits, and SIGABRT\n"
                  "where it fails")
        ->excludes(minutes);
    command.add_option("--json", check.json, "A file for the results")->type_name("FILE");
    command.add_option("--junit", check.junit, "A file for the results, as JUnit writes them")->type_name("FILE");
}

void writeReport(const std::string &file, const std::string &text) {
    if (!file.empty()) writeFileAtomically(file, text);
}

int report(const std::vector<CheckResult> &results, const CheckOptions &options, std::ostream &out) {
    printResults(results, options, out);
    return allWell(results) ? kExitDone : kExitInput;
}

int runCheck(const ProgramOptions &program, const CheckCommandOptions &check, std::ostream &out, std::ostream &) {
    CheckOptions run = check.run;
    run.module = program.module;
    if (const auto reason = whyUnreadable(run.module))
        throw InputError({.file = run.module}, "cannot read the module: " + *reason);
    if (check.reproduce) return report({reproduceCheck(run)}, run, out);
    for (const std::string &file : {check.json, check.junit}) {
        if (file.empty()) continue;
        refuseToReplace(file, run.module);
        tryToWrite(file); // now, since the checks may take hours
    }
    const std::vector<CheckResult> results = runChecks(run, [](const CheckResult &) {});
    const int status =
        report(results, run, out); // before the files, so that the results are printed even if those cannot be written
    writeReport(check.json, resultsAsJson(results, run));
    writeReport(check.junit, resultsAsJunit(results, run));
    return status;
}

} // namespace

// It loads the module itself, in one process for each check.
constinit const Command checkCommand = makeCommand<CheckCommandOptions, declareOptions, runCheck>(
    {.name = "check", .help = "Check whether a module fulfils what hosts demand", .needsModule = false});

} // namespace velm::host
