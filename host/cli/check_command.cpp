// "velm check": whether a compiled module keeps to what hosts demand of it.
#include "host/base/error.h"
#include "host/check/report.h"
#include "host/cli/commands.h"
#include "host/cli/run.h"
#include "host/io/files.h"

#include <ostream>

namespace velm::host {

namespace {

void writeReport(const std::string &file, const std::string &text) {
    if (!file.empty()) writeFileAtomically(file, text);
}

int report(const std::vector<CheckResult> &results, const CheckOptions &options, std::ostream &out) {
    printResults(results, options, out);
    return allWell(results) ? kExitDone : kExitInput;
}

} // namespace

int runCheck(const Options &options, const CheckCommandOptions &check, std::ostream &out) {
    CheckOptions run = check.run;
    run.module = options.module;
    if (const auto reason = whyUnreadable(run.module))
        throw InputError({.file = run.module}, "cannot read the module: " + *reason);
    if (check.reproduce) return report({reproduceCheck(run)}, run, out);
    for (const std::string &file : {check.json, check.junit})
        if (!file.empty()) tryToWrite(file); // hours may pass until there is something to write
    const std::vector<CheckResult> results = runChecks(run, [](const CheckResult &) {});
    const int status = report(results, run, out); // first, so that they are told whatever becomes of the files
    writeReport(check.json, resultsAsJson(results, run));
    writeReport(check.junit, resultsAsJunit(results, run));
    return status;
}

} // namespace velm::host
