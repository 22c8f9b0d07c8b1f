#include "host/cli/render_options.h"

#include "host/base/limits.h"
#include "host/cli/option_types.h"
#include "module/host.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <utility>
#include <vector>

namespace velm::host {

namespace {

constexpr double kLongestRender = 1e9; // seconds

} // namespace

PictureSize parseSize(const std::string &text) {
    const auto sides = parseIntegers<2>(text, 'x');
    if (!sides) throw UsageError(fmt::format("--size: \"{}\" is no size such as 960x540", text));
    for (const int side : *sides)
        if (side < 1 || side > kLargestSide)
            throw UsageError(fmt::format("--size: {} is not from 1 to {}", side, kLargestSide));
    return {.width = (*sides)[0], .height = (*sides)[1]};
}

Region parseRegion(const std::string &text) {
    const auto edges = parseIntegers<4>(text, ',');
    if (!edges) throw UsageError(fmt::format("--region: \"{}\" is no region such as 0,0,320,200", text));
    const Region region{.left = (*edges)[0], .top = (*edges)[1], .right = (*edges)[2], .bottom = (*edges)[3]};
    if (region.left < 0 || region.top < 0)
        throw UsageError(fmt::format("--region: \"{}\" starts outside the picture", text));
    if (region.right <= region.left || region.bottom <= region.top)
        throw UsageError(
            fmt::format("--region: \"{}\" is empty; it must end right of and below where it starts", text));
    return region;
}

ProgressStyle parseProgress(const std::string &text) {
    constexpr std::pair<const char *, ProgressStyle> kStyles[] = {{"bar", ProgressStyle::bar},
                                                                  {"percent", ProgressStyle::percent},
                                                                  {"openjd", ProgressStyle::openJd},
                                                                  {"none", ProgressStyle::none}};
    std::vector<std::string> known;
    for (const auto &[name, style] : kStyles) {
        if (text == name) return style;
        known.emplace_back(name);
    }
    throw UsageError(fmt::format("--progress: \"{}\" is none of {}", text, fmt::join(known, ", ")));
}

namespace {

// What is printed and logged.
void declareReports(CLI::App &command, ProgramOptions &program, RenderOptions &options) {
    auto *const quiet = command.add_flag("--quiet", options.quiet, "No progress");
    addParsed(command, "--progress", options.progress, parseProgress, "STYLE",
              "How progress is shown: bar; percent, lines such as \"Progress: 42%\" on standard\n"
              "error; openjd, lines such as \"openjd_progress: 42\" on standard output; or none")
        ->excludes(quiet);
    auto *const stats = command.add_flag("--stats", options.stats, "Print rays, times and memory when done");
    command.add_flag("--json", options.json, "Print the statistics as JSON")->needs(stats);
    command
        .add_option("--log", program.log,
                    "A file to which a line is appended for each event, with the time, the level and\n"
                    "the memory in use")
        ->type_name("FILE");
}

} // namespace

void declareRenderOptions(CLI::App &command, ProgramOptions &program, RenderOptions &options) {
    declareSceneOptions(command, options);
    command
        .add_option("-o,--output", options.output,
                    "The picture's file: .png, .jpg, .exr, .tif or .hdr. #### or %04d in the name\n"
                    "is replaced by the frame's number; without it, the number of each of several\n"
                    "frames goes before the extension. Default: the scene's name with .png, in\n"
                    "the current directory")
        ->type_name("FILE");
    addParsed(command, "--frames", options.frames, FrameList::parse, "LIST",
              "The frames to render, in this order: frames and ranges such as 1-10x3,15, in\n"
              "which x3, or :3, is a step; otherwise the scene's step counts");
    command.add_flag("--skip-existing", options.skipExisting, "Leave frames alone whose pictures exist");
    command
        .add_option("--time-limit", options.timeLimit,
                    "Seconds after which the render ends with status 3; frames that are complete by\n"
                    "then are kept. 0, the default, for no limit")
        ->check(numberFrom(0, kLongestRender))
        ->type_name("SECONDS");
    addParsed(command, "--size", options.size, parseSize, "WxH", "The size of the picture in pixels");
    addParsed(command, "--region", options.region, parseRegion, "X0,Y0,X1,Y1",
              "Only the columns X0 to X1 - 1 and rows Y0 to Y1 - 1, from the upper left;\n"
              "the rest stays black");
    command.add_option("--samples", options.samples, "Samples per pixel")
        ->check(CLI::Range(1, kMostSamples))
        ->type_name("N");
    command.add_option("--threads", options.threads, "Render threads; the machine's cores by default")
        ->check(CLI::Range(1, static_cast<int>(kMaxThreads)))
        ->type_name("N");
    addReadLimits(command, program.reading);
    command.add_flag("--strict", options.strict,
                     "Treat warnings, such as of a missing or damaged image, as errors:\n"
                     "no picture is written then");
    declareReports(command, program, options);
}

} // namespace velm::host
