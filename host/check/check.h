// Checks of a compiled module as a black box: what the wall demands of every module, tried from the host's side. Each
// check runs in a process of its own with a limit of time, so that a crash or a hang is a result and not an end.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

enum class Outcome { pass, warn, fail, crash, hang, skip };

// "PASS" and so on.
const char *outcomeName(Outcome outcome);

// What a check is told. `server` is the node's server name, empty for a check of the module as a whole.
struct CheckTask {
    std::string module; // the file
    std::string server;
    std::uint64_t seed = 0;
};

enum class CheckScope { module, node };

// A check ends by returning, or by `failCheck` and `skipCheck` (blackboard.h). What it throws counts as a failure.
struct Check {
    const char *name;    // "life.balance"; unique
    int level;           // 1 to kHighestLevel
    CheckScope scope;    // once for the module, or once for each of its nodes
    const char *demands; // what is demanded, in a line
    void (*run)(const CheckTask &task);
    int turns = 1; // how often it runs, each time with another seed; above 1 it may go on for as long as wanted
};

// All checks, by level. Unique names.
std::span<const Check> allChecks();

struct CheckOptions {
    std::string module;
    int level = 5;          // the highest one that runs
    std::string filter;     // only checks whose "name/server" is this text, else those that have it in it
    std::uint64_t seed = 1; // what all choices are drawn from
    double limit = 60;      // seconds that one check may take
    double minutes = 0;     // how long checks that run more than once go on, from the start of all; 0: no longer
};

struct CheckResult {
    const Check *check = nullptr;
    std::string server;
    Outcome outcome = Outcome::pass;
    std::string message;    // what was found; of a crash or a hang with the last call made
    std::string printed;    // the end of what the process wrote while it ran, when it ended badly
    std::uint64_t seed = 0; // of this one check
    double seconds = 0;
    std::uint64_t master = 0; // the seed for everything that brings this one about as its first turn

    std::string fullName() const; // "life.balance/Velm Counter", "file.loads"
};

// Runs what the options select, two at a time, and gives the results in the order of `allChecks`, a node after the
// other, and one turn after the other. `done` hears of each one as it ends, in any order. InputError when the filter
// selects nothing, or nothing that could go on for some minutes. The module is never loaded into the calling process.
// That one's other threads must be idle: libraries have some, and the processes of the checks are born without them.
std::vector<CheckResult> runChecks(const CheckOptions &options, const std::function<void(const CheckResult &)> &done);

// Runs the first turn of the one check that the options select here in this process, without limits, and ends the
// process by SIGABRT at the place where it fails. InputError unless the options select one check and, of a check of
// nodes, one node.
CheckResult reproduceCheck(const CheckOptions &options);

// Without FAIL, CRASH and HANG.
bool allWell(const std::vector<CheckResult> &results);

} // namespace velm::host
