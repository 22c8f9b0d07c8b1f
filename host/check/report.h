// The results of checks, for people and for programs.
#pragma once

#include "host/check/check.h"

#include <iosfwd>
#include <span>
#include <string>

namespace velm::host {

// A line for each check of the module and for each check of nodes, a further one for each node that is not well, and
// the sum. A bad end comes with the command that shows it again.
void printResults(std::span<const CheckResult> results, const CheckOptions &options, std::ostream &out);

// {"module", "seed", "level", "counts": {"PASS": ...}, "results": [{"name", "level", "server", "demands", "outcome",
// "message", "printed", "seed", "seconds"}]}
std::string resultsAsJson(std::span<const CheckResult> results, const CheckOptions &options);

// One test suite for each check, one test case for each node; WARN passes, with its text as output.
std::string resultsAsJunit(std::span<const CheckResult> results, const CheckOptions &options);

} // namespace velm::host
