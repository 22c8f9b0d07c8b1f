// Reports of check results, for people and for programs.
#pragma once

#include "host/check/check.h"

#include <iosfwd>
#include <span>
#include <string>

namespace velm::host {

// Prints a table: a line for each check, further lines for each result other than PASS, and the counts. Failures,
// crashes and hangs come with the command that reproduces them.
void printResults(std::span<const CheckResult> results, const CheckOptions &options, std::ostream &out);

// {"module", "seed", "level", "counts": {"PASS": ...}, "results": [{"name", "level", "server", "demands", "outcome",
// "message", "printed", "seed", "master", "seconds"}]}
std::string resultsAsJson(std::span<const CheckResult> results, const CheckOptions &options);

// JUnit's XML: a test suite for each check, with a test case for each node and turn. WARN passes, with its message as
// output.
std::string resultsAsJunit(std::span<const CheckResult> results, const CheckOptions &options);

} // namespace velm::host
