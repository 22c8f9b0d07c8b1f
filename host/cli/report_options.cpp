#include "host/cli/report_options.h"

#include "host/cli/option_types.h"

#include <utility>

namespace velm::host {

ProgressStyle parseProgress(const std::string &text) {
    constexpr std::pair<const char *, ProgressStyle> kStyles[] = {{"bar", ProgressStyle::bar},
                                                                  {"percent", ProgressStyle::percent},
                                                                  {"openjd", ProgressStyle::openJd},
                                                                  {"none", ProgressStyle::none}};
    return parseWord("--progress", text, kStyles);
}

void declareReports(CLI::App &command, ReportOptions &options) {
    command.add_flag("--strict", options.strict,
                     "Treat warnings, such as of a missing or damaged image, as errors:\n"
                     "no picture is written then");
    auto *const quiet = command.add_flag("--quiet", options.quiet, "No progress");
    addParsed(command, "--progress", options.progress, parseProgress, "STYLE",
              "How progress is shown: bar; percent, lines such as \"Progress: 42%\" on standard\n"
              "error; openjd, lines such as \"openjd_progress: 42\" on standard output; or none")
        ->excludes(quiet);
    auto *const stats = command.add_flag("--stats", options.stats, "Print rays, times and memory when done");
    command.add_flag("--json", options.json, "Print the statistics as JSON")->needs(stats);
}

} // namespace velm::host
