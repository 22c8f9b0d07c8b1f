#include "host/cli/options.h"

#include "host/base/names.h"
#include "host/cli/run.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>

namespace velm::host {

namespace {

constexpr const char *kVersionText = "velm " VELM_VERSION;
constexpr int kLargestSide = 32768, kMostSamples = 4096, kLastFrameNumber = 999999;

// Whole numbers parted by a character each; nothing when the text is not quite that.
template <std::size_t n>
std::optional<std::array<int, n>> wholeNumbers(std::string_view text, char parting) {
    std::array<int, n> numbers{};
    const char *at = text.data(), *const end = text.data() + text.size();
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0 && (at == end || *at++ != parting)) return std::nullopt;
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc{}) return std::nullopt;
        at = next;
    }
    return at == end ? std::optional(numbers) : std::nullopt;
}

// An option whose text one of the functions above takes apart.
template <class T>
void addParsed(CLI::App &command, const std::string &name, std::optional<T> &target, T (*parse)(const std::string &),
               const std::string &kind, const std::string &help) {
    command
        .add_option_function<std::string>(
            name, [&target, parse](const std::string &text) { target = parse(text); }, help)
        ->type_name(kind);
}

// The library's own range lets "nan" through, which compares with nothing.
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

std::string defaultModule() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return (error ? std::filesystem::path(".") : program.parent_path()) / "velm.p";
}

// What goes with the program as with every command.
void addCommon(CLI::App &app, Options &options) {
    app.set_version_flag("--version", kVersionText);
    app.add_option("--module", options.module, "The module to load; velm.p beside this program by default")
        ->type_name("FILE");
}

void addGuard(CLI::App &command, GuardOptions &guard) {
    constexpr double kLongest = 1e6;
    command
        .add_option("--call-limit", guard.callLimit,
                    "Seconds after which a call of the module that has not returned, or samples of\n"
                    "which none is finished, count as hung; 0 for any time")
        ->check(numberFrom(0, kLongest))
        ->capture_default_str()
        ->type_name("SECONDS");
    command.add_flag("!--unguarded", guard.on,
                     "Run the module in this process, for a debugger: when it crashes, so does velm");
}

void addData(CLI::App &command, std::vector<std::string> &directories) {
    command
        .add_option("--data", directories,
                    "A directory to look for meshes and images in, after the scene's own; may be\n"
                    "given again. The directories in the environment variable VELM_DATA, parted\n"
                    "by colons, follow")
        ->check(CLI::ExistingDirectory)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("DIR");
}

void addRender(CLI::App &command, RenderOptions &options) {
    command.add_option("SCENE", options.scene, "The scene file")->required()->type_name("");
    command
        .add_option("-o,--output", options.output,
                    "The picture's file: .png, .jpg, .exr, .tif or .hdr. #### or %04d in the name\n"
                    "stands for the frame's number, which else goes before the ending when\n"
                    "several frames are rendered. Default: the scene's name with .png, in the\n"
                    "current directory")
        ->type_name("FILE");
    addParsed(command, "--frames", options.frames, parseFrames, "A-B", "The frames to render, or one frame");
    addParsed(command, "--size", options.size, parseSize, "WxH", "The picture's size");
    addParsed(command, "--region", options.region, parseRegion, "X0,Y0,X1,Y1",
              "Only the columns X0 to X1 - 1 and rows Y0 to Y1 - 1, from the upper left;\n"
              "the rest stays black");
    command.add_option("--samples", options.samples, "Samples of each pixel")
        ->check(CLI::Range(1, kMostSamples))
        ->type_name("N");
    command.add_option("--threads", options.threads, "Render threads; the machine's cores by default")
        ->check(CLI::Range(1, static_cast<int>(kMaxThreads)))
        ->type_name("N");
    addData(command, options.data);
    command.add_flag("--strict", options.strict,
                     "Take a missing or damaged image, and whatever else is warned of, for an error:\n"
                     "there is no picture then");
    command.add_flag("--quiet", options.quiet, "No progress");
    command.add_flag("--stats", options.stats, "Tell of rays, times and memory when done");
}

void addCompare(CLI::App &command, CompareOptions &options) {
    constexpr double kLargest = 1e30;
    command.add_option("A", options.first, "A picture")->required()->type_name("");
    command.add_option("B", options.second, "The picture that it is compared with")->required()->type_name("");
    command
        .add_option("--tolerance", options.limits.tolerance,
                    "How far a channel of a pixel may be off, absolutely, before the pixel counts\n"
                    "as different")
        ->check(numberFrom(0, kLargest))
        ->capture_default_str()
        ->type_name("T");
    command.add_option("--mean", options.limits.mean, "The largest mean of all differences")
        ->check(numberFrom(0, kLargest))
        ->capture_default_str()
        ->type_name("M");
    command.add_option("--rms", options.limits.rms, "The largest root mean square of all differences")
        ->check(numberFrom(0, kLargest))
        ->capture_default_str()
        ->type_name("R");
    command.add_option("--share", options.limits.share, "The fraction of all pixels that may differ, 0 to 1")
        ->check(numberFrom(0, 1))
        ->capture_default_str()
        ->type_name("S");
    command.add_flag("!--no-alpha", options.limits.alpha, "Leave alpha out");
    command.add_option("--differences", options.differences, "A picture file for the differences")->type_name("FILE");
}

void addPack(CLI::App &command, PackOptions &options) {
    command.add_option("SCENE", options.scene, "The scene file whose surfaces are packed")->required()->type_name("");
    command.add_option("OBJECT", options.object, "The object file (.lwo) that is copied")->required()->type_name("");
    command
        .add_option("-o,--output", options.output,
                    "The new object file. Default: the object's name with _packed, in the current\n"
                    "directory")
        ->type_name("FILE");
    addData(command, options.data);
    command.add_flag("--strict", options.strict, "Take whatever is warned of for an error");
}

void addUnpack(CLI::App &command, UnpackOptions &options) {
    command.add_option("OBJECT", options.object, "The object file (.lwo)")->required()->type_name("");
    command.add_option("-o,--output", options.output, "The scene file; printed by default")->type_name("FILE");
    addData(command, options.data);
    command.add_flag("--strict", options.strict,
                     "Take whatever is warned of, such as a node that is not there, for an error");
}

void addCheck(CLI::App &command, Options &options, CheckCommandOptions &check) {
    command.add_option("MODULE", options.module, "The module to check; velm.p beside this program by default")
        ->type_name("");
    command.add_option("--level", check.run.level, "The highest level of checks that runs")
        ->check(CLI::Range(1, kHighestLevel))
        ->capture_default_str()
        ->type_name("N");
    command.add_option("--filter", check.run.filter, "Only checks whose \"name/server\" has this text in it")
        ->type_name("TEXT");
    command.add_option("--seed", check.run.seed, "What all choices are drawn from")
        ->capture_default_str()
        ->type_name("N");
    constexpr double kLeastMinutes = 1e-6, kMostMinutes = 1e6;
    CLI::Option *minutes = command
                               .add_option("--minutes", check.run.minutes,
                                           "How long level 10 goes on with new seeds, from the start of all checks")
                               ->check(numberFrom(kLeastMinutes, kMostMinutes))
                               ->type_name("N");
    command
        .add_flag("--reproduce", check.reproduce,
                  "Run one check in this process, for a debugger: no limits, and SIGABRT\n"
                  "where it fails")
        ->excludes(minutes);
    command.add_option("--json", check.json, "A file for the results")->type_name("FILE");
    command.add_option("--junit", check.junit, "A file for the results, as JUnit writes them")->type_name("FILE");
    command.set_version_flag("--version", kVersionText);
}

// The library says only that a command is missing, and nothing of a misspelt one.
[[noreturn]] void failWithoutCommand(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *command : app.get_subcommands({})) names.push_back(command->get_name());
    const std::vector<std::string> rest = app.remaining();
    if (rest.empty()) throw UsageError(fmt::format("a command is needed: {}", fmt::join(names, ", ")));
    const std::string &word = rest.front();
    if (word.starts_with('-')) throw UsageError(fmt::format("there is no option {}", word));
    throw UsageError(fmt::format("there is no command {}{}", velm::host::quoted(word), suggestion(word, names)));
}

std::string joined(int argc, const char *const *argv) {
    std::vector<std::string> words{"velm"};
    words.insert(words.end(), argv + 1, argv + argc);
    return fmt::format("{}", fmt::join(words, " "));
}

// The library names all words that are left over, the last one first, and suggests nothing.
[[noreturn]] void failAtLeftWords(const CLI::App &app, const CLI::ParseError &error, int status) {
    for (std::string word : app.remaining(true)) {
        if (!word.starts_with('-')) continue;
        word.resize(std::min(word.find('='), word.size()));
        std::vector<std::string> known;
        for (const CLI::App *command : app.get_subcommands())
            for (const CLI::Option *option : command->get_options())
                for (const std::string &name : option->get_lnames()) known.push_back("--" + name);
        throw UsageError(fmt::format("there is no option {}{}", word, didYouMean(word, known)), status);
    }
    throw UsageError(error.what(), status);
}

} // namespace

FrameRange parseFrames(const std::string &text) {
    FrameRange range;
    if (const auto two = wholeNumbers<2>(text, '-'))
        range = {.first = (*two)[0], .last = (*two)[1]};
    else if (const auto one = wholeNumbers<1>(text, '-'))
        range = {.first = (*one)[0], .last = (*one)[0]};
    else
        throw UsageError(fmt::format("--frames: \"{}\" is neither a frame nor a range such as 1-24", text));
    if (range.last < range.first)
        throw UsageError(
            fmt::format("--frames: the last frame, {}, comes before the first, {}", range.last, range.first));
    if (range.first < -kLastFrameNumber || range.last > kLastFrameNumber)
        throw UsageError(
            fmt::format("--frames: frames are numbered from {} to {}", -kLastFrameNumber, kLastFrameNumber));
    return range;
}

PictureSize parseSize(const std::string &text) {
    const auto sides = wholeNumbers<2>(text, 'x');
    if (!sides) throw UsageError(fmt::format("--size: \"{}\" is no size such as 960x540", text));
    for (const int side : *sides)
        if (side < 1 || side > kLargestSide)
            throw UsageError(fmt::format("--size: {} is not from 1 to {}", side, kLargestSide));
    return {.width = (*sides)[0], .height = (*sides)[1]};
}

Region parseRegion(const std::string &text) {
    const auto edges = wholeNumbers<4>(text, ',');
    if (!edges) throw UsageError(fmt::format("--region: \"{}\" is no region such as 0,0,320,200", text));
    const Region region{.left = (*edges)[0], .top = (*edges)[1], .right = (*edges)[2], .bottom = (*edges)[3]};
    if (region.left < 0 || region.top < 0)
        throw UsageError(fmt::format("--region: \"{}\" starts outside the picture", text));
    if (region.right <= region.left || region.bottom <= region.top)
        throw UsageError(
            fmt::format("--region: \"{}\" is empty; it must end right of and below where it starts", text));
    return region;
}

std::optional<Options> parseOptions(int argc, const char *const *argv, std::ostream &out) {
    Options options{.module = defaultModule(), .guard = {}, .command = {}, .commandLine = joined(argc, argv)};
    NodesOptions nodes;
    ShowOptions show;
    RenderOptions render;
    CompareOptions compare;
    PackOptions pack;
    UnpackOptions unpack;
    CheckCommandOptions check;

    CLI::App app("Loads a module of shading nodes, lists its nodes, and renders scenes with them.", "velm");
    app.require_subcommand(1);
    addCommon(app, options);
    CLI::App *nodesCommand = app.add_subcommand("nodes", "List the module's nodes");
    nodesCommand->add_flag("--all", nodes.all, "The host's own nodes too");
    CLI::App *showCommand = app.add_subcommand("show", "Show a node: inputs, outputs, settings, panel");
    showCommand->add_option("NODE", show.node, "Its name, as listed by \"velm nodes\"")->required()->type_name("");
    CLI::App *renderCommand = app.add_subcommand("render", "Render a scene");
    addRender(*renderCommand, render);
    CLI::App *checkCommand = app.add_subcommand("check", "Check whether a module keeps to what hosts demand");
    addCheck(*checkCommand, options, check);
    CLI::App *compareCommand = app.add_subcommand("compare", "Compare two pictures");
    addCompare(*compareCommand, compare);
    compareCommand->set_version_flag("--version", kVersionText);
    CLI::App *packCommand = app.add_subcommand("pack", "Write a scene's networks into a copy of an object file");
    addPack(*packCommand, pack);
    CLI::App *unpackCommand = app.add_subcommand("unpack", "Print the networks of an object file as a scene file");
    addUnpack(*unpackCommand, unpack);
    for (CLI::App *command : {nodesCommand, showCommand, renderCommand, packCommand, unpackCommand}) {
        addCommon(*command, options);
        addGuard(*command, options.guard);
    }

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &asked) { // --help, --version
        app.exit(asked, out, out);
        return std::nullopt;
    } catch (const CLI::ParseError &error) {
        if (dynamic_cast<const CLI::RequiredError *>(&error) != nullptr && app.get_subcommands().empty())
            failWithoutCommand(app);
        const int status = compareCommand->parsed() ? int{kCompareFailed} : int{kExitUsage};
        if (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr) failAtLeftWords(app, error, status);
        throw UsageError(error.what(), status);
    }
    if (*nodesCommand) options.command = nodes;
    if (*showCommand) options.command = show;
    if (*renderCommand) options.command = render;
    if (*checkCommand) options.command = check;
    if (*compareCommand) options.command = compare;
    if (*packCommand) options.command = pack;
    if (*unpackCommand) options.command = unpack;
    return options;
}

} // namespace velm::host
