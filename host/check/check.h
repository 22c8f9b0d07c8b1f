// The validator: checks a compiled module as a black box against what the plug-in interface demands of every module.
// Each check runs in a process of its own with a time limit, so that a crash or a hang is a result like any other.
#pragma once

#include "host/check/levels/levels.h"
#include "host/check/process/outcome.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

// All checks in the order of their levels, with unique names. [any thread]
std::span<const Check> allChecks();

struct CheckOptions {
    std::string module;     // path of the module's file
    int level = 5;          // the highest level that runs
    std::string filter;     // the check whose "name/server" equals this text; if there is none, all that contain it
    std::uint64_t seed = 1; // all random choices derive from it
    double limit = 60;      // seconds that one check may take
    double minutes = 0;     // how long checks of several turns go on, from the start of the run; 0: only their turns
};

struct CheckResult {
    const Check *check = nullptr;
    std::string server; // the node's server name; empty for a check of the module
    Outcome outcome = Outcome::pass;
    std::string message;      // the finding; for a crash or a hang, with the last call into the module
    std::string printed;      // the end of the process's output, after a crash or a hang
    std::uint64_t seed = 0;   // the seed of this run, derived from `master`
    double seconds = 0;       // how long it ran
    std::uint64_t master = 0; // with this as CheckOptions::seed, the run is repeated as the check's first turn

    std::string fullName() const; // "life.balance/Velm Counter", "file.loads"
};

// Runs the selected checks, at most two at a time, and returns their results in the order of `allChecks`, then by node,
// then by turn. `done` is called with each result as its check ends, in any order. If the module cannot be loaded, the
// only result is that of the check that loads it. The module is never loaded into the calling process. A signal that
// ends programs ends the calling process as soon as the checks' processes and files are gone. The calling process
// forks: its other threads must be idle. Throws InputError if the filter selects nothing or, with `minutes`, no check
// of several turns; MachineError if no process can be started. [interface thread]
std::vector<CheckResult> runChecks(const CheckOptions &options, const std::function<void(const CheckResult &)> &done);

// Runs the first turn of the one selected check in the calling process without a time limit, for a debugger. A failure
// ends the process by SIGABRT at the call that failed, and a skipped check ends it with status 0. Throws InputError
// unless the options select exactly one check and, for a check of nodes, one node. [interface thread]
CheckResult reproduceCheck(const CheckOptions &options);

// True if there is no FAIL, CRASH or HANG.
bool allWell(const std::vector<CheckResult> &results);

} // namespace velm::host
