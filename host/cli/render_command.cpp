// "velm render": the frames of a scene, as pictures.
#include "host/base/warnings.h"
#include "host/cli/commands.h"
#include "host/cli/frame_names.h"
#include "host/cli/interrupt.h"
#include "host/cli/output_file.h"
#include "host/cli/progress.h"
#include "host/cli/render_options.h"
#include "host/cli/statistics.h"
#include "host/graph/listed_module.h"
#include "host/graph/node.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/read_scene.h"
#include "host/services/time.h"

#include <cstdlib>
#include <fmt/format.h>
#include <ostream>

namespace velm::host {

namespace {

// The command line has its say over the scene; all that follows goes by the description.
void overrule(RenderDescription &scene, const RenderOptions &options) {
    if (options.size) {
        scene.width = options.size->width;
        scene.height = options.size->height;
    }
    if (options.samples > 0) scene.samples = options.samples;
    if (options.frames) {
        scene.firstFrame = options.frames->first;
        scene.lastFrame = options.frames->last;
    }
}

struct RenderPlan {
    RenderJob job; // of the first frame
    std::vector<int> frames;
    double framesPerSecond;
    FrameNames names;
};

RenderJob planJob(const RenderDescription &scene, const RenderOptions &options) {
    RenderJob job = renderJob(scene);
    job.threads = options.threads;
    if (!options.region) return job;
    job.region = *options.region;
    if (job.region.right > job.width || job.region.bottom > job.height)
        throw UsageError(fmt::format("--region: the region ends at {},{}, outside the picture of {}x{}",
                                     job.region.right, job.region.bottom, job.width, job.height));
    return job;
}

RenderPlan makePlan(const SceneDescription &scene, const RenderOptions &options) {
    const RenderDescription &render = scene.render;
    std::vector<int> frames;
    for (int frame = render.firstFrame; frame <= render.lastFrame; frame += render.frameStep) frames.push_back(frame);
    const bool several = frames.size() > 1;
    return {.job = planJob(render, options),
            .frames = std::move(frames),
            .framesPerSecond = render.framesPerSecond,
            .names = FrameNames(options.output.empty() ? scene.name + ".png" : options.output, several)};
}

// Names of frames differ in the number alone, so that the first or the last is the longest: where these two can be
// written, those between can, unless something else stands there.
void prepareOutputs(const RenderPlan &plan, const SceneDescription &scene) {
    for (const int frame : {plan.frames.front(), plan.frames.back()}) prepareOutput(plan.names(frame));
    for (const int frame : plan.frames) {
        const std::string file = plan.names(frame);
        checkOutputName(file);
        for (const ImageDescription &image : scene.images)
            if (image.notFound.empty()) refuseToReplace(file, image.file);
    }
}

// Surfaces between init and cleanup.
class Rendering {
  public:
    explicit Rendering(SceneSurfaces &scene) : scene_(scene) { scene_.init(kInitRender); }
    ~Rendering() { scene_.cleanup(); }
    Rendering(const Rendering &) = delete;
    Rendering &operator=(const Rendering &) = delete;

  private:
    SceneSurfaces &scene_;
};

// Who is told what while the frames are rendered.
struct Telling {
    ProgressReport progress;
    TotalStatistics total;
    Warnings warnings;

    Telling(const RenderOptions &options, std::ostream &err)
        : progress(err, progressStyle(err, options.quiet)),
          warnings(options.strict ? Warnings::Policy::strict : Warnings::Policy::goOn,
                   [this](const Warning &warning) { progress.note("velm: warning: " + warning.text()); }) {}
    Telling(const Telling &) = delete;
    Telling &operator=(const Telling &) = delete;

    // What the run has gone without, once more at its end: the lines above may have scrolled away.
    void sumUpWarnings() {
        if (!warnings.all().empty()) progress.note("velm: " + warnings.summary());
    }
};

// Networks can come back to themselves behind the host's back, so that only rendering brings it to light.
void warnOfCircle(const std::string &sceneFile, Warnings &warnings) {
    if (!takeEvaluationTooDeep()) return;
    warnings.add({.location = {.file = sceneFile, .line = 0},
                  .path = "",
                  .brief = "nodes that ask each other in a circle",
                  .message = "nodes ask each other in a circle, by way of a store perhaps; the inputs where it was cut "
                             "off count as unconnected"});
}

// Renders all frames and writes each when it is whole; false when it was interrupted.
bool renderFrames(const RenderPlan &plan, const RenderScene &world, SceneSurfaces &built,
                  const PictureMetadata &metadata, Telling &telling) {
    const InterruptGuard guard;
    const Rendering rendering(built);
    for (std::size_t i = 0; i < plan.frames.size(); ++i) {
        RenderJob job = plan.job;
        job.frame = plan.frames[i];
        job.time = job.frame / plan.framesPerSecond;
        setTime(job.frame, job.time);
        built.newTime(job.frame, job.time);
        telling.progress.begin(plan.frames.size() > 1
                                   ? fmt::format("frame {} ({} of {})", job.frame, i + 1, plan.frames.size())
                                   : fmt::format("frame {}", job.frame));
        const Frame frame = renderFrame(world, job, &telling.progress);
        telling.total.add(frame.statistics);
        if (!frame.complete || InterruptGuard::interrupted()) return false;
        warnOfCircle(metadata.scene, telling.warnings);
        const std::string file = plan.names(job.frame);
        writePicture(frame.picture, file, metadata);
        telling.progress.end(
            fmt::format("{}, {} x {}, in {}", file, job.width, job.height, durationText(frame.statistics.seconds)));
    }
    return true;
}

int run(const ProgramOptions &options, const RenderOptions &render, std::ostream &out, std::ostream &err) {
    SceneDescription scene = readScene(render.scene, makeSearchPath(render.data, std::getenv("VELM_DATA")));
    overrule(scene.render, render);
    const RenderPlan plan = makePlan(scene, render);
    prepareOutputs(plan, scene);

    Telling telling(render, err);
    const ListedModule module(options.module);
    RenderScene world(scene); // before the nodes, whose panels may list what stands in it
    SceneSurfaces built(scene, serverList(), &telling.warnings);
    world.prepare(scene, [&built](const std::string &name) { return built.surface(name); });
    telling.total.prepared(world.pointCount());
    const PictureMetadata metadata{
        .scene = scene.file, .module = module.path(), .version = "velm " VELM_VERSION, .command = options.commandLine};
    const bool complete = renderFrames(plan, world, built, metadata, telling);
    telling.sumUpWarnings();
    if (!complete) {
        telling.progress.end("velm: interrupted; the frame that was under way is not written");
        return kExitInterrupted;
    }
    if (render.stats) telling.total.print(out);
    return kExitDone;
}

} // namespace

constinit const Command renderCommand =
    makeCommand<RenderOptions, declareRenderOptions, run>({.name = "render", .help = "Render a scene"});

} // namespace velm::host
