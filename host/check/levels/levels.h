// The checks themselves: one file and one table for each level. The checks of a level assume that those of the levels
// below pass.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace velm::host {

// The subject of one run of a check.
struct CheckTask {
    std::string module;     // path of the module's file
    std::string server;     // server name of the node; empty for a check of the module as a whole
    std::uint64_t seed = 0; // of all random choices
    // A temporary directory for the checks of this run, which is removed after it; empty if it could not be created.
    std::string directory = {};
};

enum class CheckScope { module, node };

// A check passes by returning. It ends otherwise through `failCheck` or `skipCheck` (check_record.h); an exception that
// leaves it counts as a failure.
struct Check {
    const char *name;    // "life.balance"; unique
    int level;           // 1 to kHighestLevel
    CheckScope scope;    // run once for the module, or once for each of its nodes
    const char *demands; // the requirement, in one line
    void (*run)(const CheckTask &task);
    int turns = 1; // how often the check runs, each time with another seed; above 1, --minutes may add further turns
};

// The checks of each level. The tables live as long as the program. [any thread]
std::span<const Check> fileChecks();     // 1
std::span<const Check> identityChecks(); // 2
std::span<const Check> lifeChecks();     // 3
std::span<const Check> evaluateChecks(); // 4
std::span<const Check> settingsChecks(); // 5
std::span<const Check> threadChecks();   // 6
std::span<const Check> inputChecks();    // 7
std::span<const Check> dataChecks();     // 8
std::span<const Check> resourceChecks(); // 9
std::span<const Check> togetherChecks(); // 10

constexpr std::span<const Check> (*kLevels[])() = {fileChecks,     identityChecks, lifeChecks,  evaluateChecks,
                                                   settingsChecks, threadChecks,   inputChecks, dataChecks,
                                                   resourceChecks, togetherChecks};
constexpr int kHighestLevel = static_cast<int>(sizeof kLevels / sizeof *kLevels);

} // namespace velm::host
