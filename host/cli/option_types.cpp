#include "host/cli/option_types.h"

#include <cstdlib>
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

SearchPath searchPath(const std::vector<std::string> &directories) {
    return makeSearchPath(directories, std::getenv("VELM_DATA"));
}

void addSceneSource(CLI::App &command, SceneSource &source) {
    command
        .add_option("FILE", source.scene,
                    "A scene (JSON), a LightWave scene (.lws), an object (.lwo) or a mesh, such as\n.obj or .gltf")
        ->required()
        ->type_name("");
    addData(command, source.data);
}

Warnings printedWarnings(std::ostream &err, bool strict) {
    return Warnings(strict ? Warnings::Policy::strict : Warnings::Policy::goOn,
                    [&err](const Warning &warning) { err << "velm: warning: " << warning.text() << '\n'; });
}

void addReadLimits(CLI::App &command, ReadLimits &limits) {
    constexpr std::uint64_t kLeast = 16, kMost = std::uint64_t{1} << 24;
    constexpr double kLongest = 1e6;
    command
        .add_option("--read-memory", limits.mebibytes,
                    "The memory that reading one mesh or image may take, in MiB; a file that needs\n"
                    "more counts as damaged")
        ->check(CLI::Range(kLeast, kMost))
        ->capture_default_str()
        ->type_name("MIB");
    command
        .add_option("--read-time", limits.seconds, "Seconds that reading one mesh or image may take; 0 for no limit")
        ->check(numberFrom(0, kLongest))
        ->capture_default_str()
        ->type_name("SECONDS");
}

} // namespace velm::host
