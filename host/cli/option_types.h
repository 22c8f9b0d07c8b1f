// Options that several commands have, and the texts of options that are more than a word or a number.
#pragma once

#include "host/base/warnings.h"
#include "host/cli/run.h"
#include "host/io/reader_process.h"
#include "host/scene/format/search_path.h"

#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velm::host {

// Integers with `separator` between them, such as "960x540"; nothing when the text is not exactly that.
template <std::size_t n>
std::optional<std::array<int, n>> parseIntegers(std::string_view text, char separator) {
    std::array<int, n> numbers{};
    const char *at = text.data(), *const end = text.data() + text.size();
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0 && (at == end || *at++ != separator)) return std::nullopt;
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc{}) return std::nullopt;
        at = next;
    }
    return at == end ? std::optional(numbers) : std::nullopt;
}

// Adds an option whose text `parse` turns into the target's type. `parse` throws UsageError.
template <class T>
CLI::Option *addParsed(CLI::App &command, const std::string &name, std::optional<T> &target,
                       T (*parse)(const std::string &), const std::string &kind, const std::string &help) {
    return command
        .add_option_function<std::string>(
            name, [&target, parse](const std::string &text) { target = parse(text); }, help)
        ->type_name(kind);
}

// The value that a word stands for. UsageError, with the option and all words, for any other word.
template <class Value, std::size_t n>
Value parseWord(const char *option, const std::string &text, const std::pair<const char *, Value> (&words)[n]) {
    std::vector<std::string> known;
    for (const auto &[word, value] : words) {
        if (text == word) return value;
        known.emplace_back(word);
    }
    throw UsageError(fmt::format("{}: \"{}\" is none of {}", option, text, fmt::join(known, ", ")));
}

// Accepts numbers from `least` to `most`. The library's own range accepts "nan", which is neither below nor above.
CLI::Validator numberFrom(double least, double most);

// The option --data: directories to look for meshes and images in.
void addData(CLI::App &command, std::vector<std::string> &directories);
// Where a command looks for meshes and images: these directories, and those that the environment names.
SearchPath searchPath(const std::vector<std::string> &directories);

// A file that can be opened as a scene, and the directories of --data.
struct SceneSource {
    std::string scene;
    std::vector<std::string> data;
};
// The argument FILE, and --data.
void addSceneSource(CLI::App &command, SceneSource &source);

// Prints each warning in a line of its own; if `strict` is set, the first one is an InputError instead. The stream must
// outlive the result.
Warnings printedWarnings(std::ostream &err, bool strict);

// The options --read-memory and --read-time.
void addReadLimits(CLI::App &command, ReadLimits &limits);

} // namespace velm::host
