#include "host/cli/option_types.h"

#include <fmt/format.h>
#include <ostream>

namespace velm::host {

CLI::Validator numberFrom(double least, double most) {
    const auto whatIsWrong = [least, most](const std::string &text) -> std::string {
        const char *const end = text.data() + text.size();
        double number = 0;
        const auto read = std::from_chars(text.data(), end, number);
        if (read.ec == std::errc{} && read.ptr == end && number >= least && number <= most) return {};
        return fmt::format("\"{}\" is not a number from {} to {}", text, least, most);
    };
    return CLI::Validator(whatIsWrong, fmt::format("FLOAT in [{} - {}]", least, most));
}

void addData(CLI::App &command, std::vector<std::string> &directories) {
    command
        .add_option("--data", directories,
                    "A directory to look for meshes and images in, after the directory of the scene;\n"
                    "may be given several times. The directories in the environment variable\n"
                    "VELM_DATA, separated by colons, follow")
        ->check(CLI::ExistingDirectory)
        ->expected(1)
        ->allow_extra_args(false) // otherwise it takes a "--" that follows
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("DIR");
}

Warnings printedWarnings(std::ostream &err, bool strict) {
    return Warnings(strict ? Warnings::Policy::strict : Warnings::Policy::goOn,
                    [&err](const Warning &warning) { err << "velm: warning: " << warning.text() << '\n'; });
}

} // namespace velm::host
