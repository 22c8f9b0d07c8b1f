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
#include "host/scene/read_scene.h"
#include "host/session/rendering.h"

#include <cstdlib>
#include <fmt/format.h>
#include <ostream>

namespace velm::host {

namespace {

// Command-line options override the scene's settings.
void applyOptions(const RenderOptions &options, RenderDescription &scene) {
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
    RenderJob job; // the same for all frames, but for the frame itself
    std::vector<int> frames;
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
            .names = FrameNames(options.output.empty() ? scene.name + ".png" : options.output, several)};
}

// The files of frames differ in their number only, so that the first or the last has the longest name: where these two
// can be written, those between can be, too, unless something else has such a name.
void prepareOutputs(const RenderPlan &plan, const SceneDescription &scene) {
    for (const int frame : {plan.frames.front(), plan.frames.back()}) prepareOutput(plan.names(frame));
    for (const int frame : plan.frames) {
        const std::string file = plan.names(frame);
        checkOutputName(file);
        for (const ImageDescription &image : scene.images)
            if (image.notFound.empty()) refuseToReplace(file, image.file);
    }
}

// Progress, statistics and warnings of the run.
struct Reporting {
    ProgressReport progress;
    TotalStatistics total;
    Warnings warnings;

    Reporting(const RenderOptions &options, std::ostream &err)
        : progress(err, progressStyle(err, options.quiet)),
          warnings(options.strict ? Warnings::Policy::strict : Warnings::Policy::goOn,
                   [this](const Warning &warning) { progress.note("velm: warning: " + warning.text()); }) {}
    Reporting(const Reporting &) = delete;
    Reporting &operator=(const Reporting &) = delete;

    // All warnings once more, in one line at the end: the earlier lines may have scrolled away.
    void sumUpWarnings() {
        if (!warnings.all().empty()) progress.note("velm: " + warnings.summary());
    }
};

// Renders all frames and writes each when it is complete; false when it was interrupted.
bool renderFrames(const RenderPlan &plan, Session &session, const PictureMetadata &metadata, Reporting &reporting) {
    const InterruptGuard guard;
    Rendering rendering(session);
    for (std::size_t i = 0; i < plan.frames.size(); ++i) {
        const int number = plan.frames[i];
        rendering.setFrame(number);
        reporting.progress.begin(plan.frames.size() > 1
                                     ? fmt::format("frame {} ({} of {})", number, i + 1, plan.frames.size())
                                     : fmt::format("frame {}", number));
        const Frame frame = rendering.render(plan.job, &reporting.progress);
        reporting.total.add(frame.statistics);
        if (!frame.complete || InterruptGuard::interrupted()) return false;
        const std::string file = plan.names(number);
        writePicture(frame.picture, file, metadata);
        reporting.progress.end(fmt::format("{}, {} x {}, in {}", file, plan.job.width, plan.job.height,
                                           durationText(frame.statistics.seconds)));
    }
    return true;
}

int run(const ProgramOptions &program, const RenderOptions &options, std::ostream &out, std::ostream &err) {
    SceneDescription scene = readScene(options.scene, makeSearchPath(options.data, std::getenv("VELM_DATA")));
    applyOptions(options, scene.render);
    const RenderPlan plan = makePlan(scene, options);
    prepareOutputs(plan, scene);

    Reporting reporting(options, err);
    const ListedModule module(program.module);
    Session session(std::move(scene), reporting.warnings);
    reporting.total.prepared(session.renderScene().pointCount());
    const PictureMetadata metadata{.scene = session.scene().file,
                                   .module = module.path(),
                                   .version = "velm " VELM_VERSION,
                                   .command = program.commandLine};
    const bool complete = renderFrames(plan, session, metadata, reporting);
    reporting.sumUpWarnings();
    if (!complete) {
        reporting.progress.end("velm: interrupted; the frame that was under way is not written");
        return kExitInterrupted;
    }
    if (options.stats) reporting.total.print(out);
    return kExitDone;
}

} // namespace

constinit const Command renderCommand =
    makeCommand<RenderOptions, declareRenderOptions, run>({.name = "render", .help = "Render a scene"});

} // namespace velm::host
