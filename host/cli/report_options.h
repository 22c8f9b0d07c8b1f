// The options of commands that render about what they report.
#pragma once

#include "host/cli/progress.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace velm::host {

struct ReportOptions {
    bool strict = false; // warnings are errors
    bool quiet = false;
    std::optional<ProgressStyle> progress;
    bool stats = false;
    bool json = false; // of the statistics
};

// The text of --progress; UsageError for others. Exposed for tests.
ProgressStyle parseProgress(const std::string &text); // "percent"

// --strict, --quiet, --progress, --stats and --json.
void declareReports(CLI::App &command, ReportOptions &options);

} // namespace velm::host
