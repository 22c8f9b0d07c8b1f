// "velm render": the frames of a scene, as pictures.
#include "host/cli/commands.h"
#include "host/cli/frame_names.h"
#include "host/cli/interrupt.h"
#include "host/cli/loaded_module.h"
#include "host/cli/output_file.h"
#include "host/cli/progress.h"
#include "host/cli/run.h"
#include "host/cli/scene_facts.h"
#include "host/cli/statistics.h"
#include "host/scene/build_scene.h"
#include "host/scene/read_scene.h"
#include "host/services/time.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <ostream>

namespace velm {

namespace {

// What is rendered, after the command line has had its say over the scene.
struct RenderPlan {
    RenderJob job; // of the first frame
    FrameRange range;
    std::vector<int> frames;
    double framesPerSecond;
    FrameNames names;
};

std::vector<int> frameList(FrameRange range, int step) {
    std::vector<int> frames;
    for (int frame = range.first; frame <= range.last; frame += step) frames.push_back(frame);
    return frames;
}

RenderJob planJob(const RenderDescription &scene, const RenderOptions &options) {
    RenderJob job = renderJob(scene);
    if (options.size) {
        job.width = options.size->width;
        job.height = options.size->height;
    }
    if (options.samples > 0) job.samples = options.samples;
    job.threads = options.threads;
    if (!options.region) return job;
    job.region = *options.region;
    if (job.region.right > job.width || job.region.bottom > job.height)
        throw UsageError(fmt::format("--region: the region ends at {},{}, outside the picture of {}x{}",
                                     job.region.right, job.region.bottom, job.width, job.height));
    return job;
}

RenderPlan makePlan(const SceneDescription &scene, const RenderOptions &options) {
    const std::string output =
        options.output.empty() ? std::filesystem::path(scene.file).stem().string() + ".png" : options.output;
    const FrameRange range =
        options.frames.value_or(FrameRange{.first = scene.render.firstFrame, .last = scene.render.lastFrame});
    std::vector<int> frames = frameList(range, scene.render.frameStep);
    const bool several = frames.size() > 1;
    return {.job = planJob(scene.render, options),
            .range = range,
            .frames = std::move(frames),
            .framesPerSecond = scene.render.framesPerSecond,
            .names = FrameNames(output, several)};
}

// Surfaces between init and cleanup.
class Rendering {
  public:
    explicit Rendering(BuiltScene &scene) : scene_(scene) { scene_.init(kInitRender); }
    ~Rendering() { scene_.cleanup(); }
    Rendering(const Rendering &) = delete;
    Rendering &operator=(const Rendering &) = delete;

  private:
    BuiltScene &scene_;
};

// Renders all frames and writes each when it is whole; false when it was interrupted.
bool renderFrames(const RenderPlan &plan, const World &world, BuiltScene &built, const PictureMetadata &metadata,
                  ProgressReport &report, TotalStatistics &total) {
    const InterruptGuard guard;
    const Rendering rendering(built);
    for (std::size_t i = 0; i < plan.frames.size(); ++i) {
        RenderJob job = plan.job;
        job.frame = plan.frames[i];
        job.time = job.frame / plan.framesPerSecond;
        setTime(job.frame, job.time);
        built.newTime(job.frame, job.time);
        report.begin(plan.frames.size() > 1 ? fmt::format("frame {} ({} of {})", job.frame, i + 1, plan.frames.size())
                                            : fmt::format("frame {}", job.frame));
        const Frame frame = renderFrame(world, job, &report);
        total.add(frame.statistics);
        if (!frame.complete || InterruptGuard::interrupted()) return false;
        const std::string file = plan.names(job.frame);
        writePicture(frame.picture, file, metadata);
        report.end(
            fmt::format("{}, {} x {}, in {}", file, job.width, job.height, durationText(frame.statistics.seconds)));
    }
    return true;
}

} // namespace

int runRender(const Options &options, const RenderOptions &render, std::ostream &out, std::ostream &err) {
    const SceneDescription scene = readScene(render.scene, makeSearchPath(render.data, std::getenv("VELM_DATA")));
    const RenderPlan plan = makePlan(scene, render);
    for (const int frame : plan.frames) prepareOutput(plan.names(frame));

    TotalStatistics total;
    const LoadedModule module(options.module);
    BuiltScene built(scene, serverList());
    const World world(scene, [&built](const std::string &name) { return built.surface(name); });
    const SceneFacts facts(scene, world, plan.job, plan.range);
    total.prepared(world.pointCount());
    ProgressReport report(err, progressStyle(err, render.quiet));
    const PictureMetadata metadata{
        .scene = scene.file, .module = module.path(), .version = "velm " VELM_VERSION, .command = options.commandLine};
    const bool complete = renderFrames(plan, world, built, metadata, report, total);
    if (!complete) {
        report.end("interrupted; the frame that was under way is not written");
        return kExitInterrupted;
    }
    if (render.stats) total.print(out);
    return kExitDone;
}

} // namespace velm
