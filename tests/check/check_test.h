// Helpers for running checks on the test modules.
#pragma once

#include "host/check/check.h"
#include "host/check/levels/levels.h"

#include <string>
#include <vector>

namespace velm::host::test {

inline std::string mutantFile(const std::string &name) { return VELM_MUTANTS "/" + name + ".p"; }

inline CheckOptions optionsFor(const std::string &file, const std::string &filter = "") {
    CheckOptions options;
    options.module = file;
    options.filter = filter;
    options.level = kHighestLevel;
    return options;
}

inline std::vector<CheckResult> resultsOf(const CheckOptions &options) {
    return runChecks(options, [](const CheckResult &) {});
}

} // namespace velm::host::test
