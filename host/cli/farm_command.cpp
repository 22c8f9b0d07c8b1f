// "velm farm": a job for a render farm, printed.
#include "host/base/names.h"
#include "host/cli/command_line.h"
#include "host/cli/commands.h"
#include "host/cli/farm_job.h"
#include "host/cli/frame_list.h"
#include "host/cli/option_types.h"
#include "host/cli/output_file.h"
#include "host/open/open_file.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>

namespace velm::host {

namespace {

constexpr int kMostParts = 10000;

struct FarmOptions : SceneSource {
    std::string engine;
    std::string output; // empty: the scene's name, in the current directory
    std::optional<FrameList> frames;
    int parts = 0;                 // 0: frames
    int chunk = 1;                 // frames of a task
    std::vector<std::string> more; // options of "velm render"
};

void declareOptions(CLI::App &command, ProgramOptions &, FarmOptions &options) {
    addSceneSource(command, options);
    command.add_option("--engine", options.engine, "What runs the job: slurm, openjd or parallel")
        ->required()
        ->type_name("NAME");
    command
        .add_option("-o,--output", options.output,
                    "The picture's file, as of \"velm render\". Default: the scene's name with .exr, in\n"
                    "the current directory")
        ->type_name("FILE");
    auto *const frames = addParsed(command, "--frames", options.frames, FrameList::parse, "LIST",
                                   "The frames to render, as of \"velm render\"; the scene's own by default");
    auto *const parts = command.add_option("--parts", options.parts, "Render one picture in N parts and merge them")
                            ->check(CLI::Range(1, kMostParts))
                            ->excludes(frames)
                            ->type_name("N");
    command.add_option("--chunk", options.chunk, "Frames that one task renders; 1 by default")
        ->check(CLI::PositiveNumber)
        ->excludes(parts)
        ->type_name("N");
    command.add_option("OPTIONS", options.more, "After --: further options of \"velm render\" for all tasks")
        ->type_name("");
}

std::string outputFor(const FarmOptions &options, const SceneDescription &scene, bool several) {
    std::string output = options.output;
    if (output.empty()) output = scene.name + (several ? "_####.exr" : ".exr");
    checkOutputName(output);
    if (options.parts > 0 && std::filesystem::path(output).extension() != ".exr")
        throw UsageError(fmt::format("--output: \"{}\" is no .exr file, and parts are merged into one", output));
    return std::filesystem::absolute(output).lexically_normal().string();
}

int run(const ProgramOptions &, const FarmOptions &options, std::ostream &out, std::ostream &) {
    if (std::ranges::count(farmEngines(), options.engine) == 0)
        throw UsageError(fmt::format("--engine: there is no engine {}{}", inQuotes(options.engine),
                                     suggestion(options.engine, farmEngines())));
    const SceneDescription scene = openFile({.file = options.scene, .path = searchPath(options.data)}).scene;
    const RenderDescription &render = scene.render;
    FarmJob job{.velm = programFile(),
                .scene = std::filesystem::absolute(options.scene).lexically_normal().string(),
                .picture = {},
                .frames = {},
                .usualStep = render.frameStep,
                .chunk = options.chunk,
                .parts = options.parts,
                .options = {}};
    if (options.parts == 0)
        job.frames = options.frames ? options.frames->frames(render.frameStep)
                                    : framesBetween(render.firstFrame, render.lastFrame, render.frameStep);
    job.picture = outputFor(options, scene, job.frames.size() > 1);
    for (const std::string &directory : options.data)
        job.options.insert(job.options.end(), {"--data", std::filesystem::absolute(directory).string()});
    job.options.insert(job.options.end(), options.more.begin(), options.more.end());
    out << farmJobText(job, options.engine);
    return kExitDone;
}

} // namespace

constinit const Command farmCommand = makeCommand<FarmOptions, declareOptions, run>(
    {.name = "farm", .help = "Print a job for a render farm", .needsModule = false});

} // namespace velm::host
