#include "host/cli/picture_command.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace velm::host {

namespace {

// An option that does not change a picture.
struct SilentOption {
    std::string_view name;
    bool hasValue;
};
constexpr SilentOption kSilentOptions[] = {
    {.name = "--threads", .hasValue = true},     {.name = "-o", .hasValue = true},
    {.name = "--output", .hasValue = true},      {.name = "--frames", .hasValue = true},
    {.name = "--progress", .hasValue = true},    {.name = "--log", .hasValue = true},
    {.name = "--time-limit", .hasValue = true},  {.name = "--call-limit", .hasValue = true},
    {.name = "--read-memory", .hasValue = true}, {.name = "--read-time", .hasValue = true},
    {.name = "--quiet", .hasValue = false},      {.name = "--stats", .hasValue = false},
    {.name = "--json", .hasValue = false},       {.name = "--skip-existing", .hasValue = false},
    {.name = "--strict", .hasValue = false},     {.name = "--unguarded", .hasValue = false}};

// Whether the word is the option alone, or with its value as in "--threads=4" and "-oFILE".
bool isOption(std::string_view word, const SilentOption &option) {
    if (!word.starts_with(option.name)) return false;
    const std::string_view rest = word.substr(option.name.size());
    return rest.empty() || (option.hasValue && (rest.starts_with('=') || !option.name.starts_with("--")));
}

} // namespace

std::string pictureCommand(std::span<const std::string> words) {
    std::string command = "velm";
    // The output of a bake is what is baked, not a file.
    const bool isBake = !words.empty() && words.front() == "bake";
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string &word = words[i];
        const auto *const silent = std::ranges::find_if(kSilentOptions, [&](const SilentOption &option) {
            return isOption(word, option) && !(isBake && option.name == "--output");
        });
        if (silent == std::end(kSilentOptions))
            command += ' ' + word;
        else if (silent->hasValue && word == silent->name)
            ++i;
    }
    return command;
}

} // namespace velm::host
