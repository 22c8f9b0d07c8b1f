// "velm render": the frames of a scene, as pictures.
#include "host/base/error.h"
#include "host/base/warnings.h"
#include "host/cli/commands.h"
#include "host/cli/existing_picture.h"
#include "host/cli/frame_names.h"
#include "host/cli/interrupt.h"
#include "host/cli/json_output.h"
#include "host/cli/log_file.h"
#include "host/cli/memory_use.h"
#include "host/cli/output_file.h"
#include "host/cli/picture_command.h"
#include "host/cli/picture_digest.h"
#include "host/cli/progress.h"
#include "host/cli/render_options.h"
#include "host/cli/statistics.h"
#include "host/graph/listed_module.h"
#include "host/graph/surface.h"
#include "host/image/picture_parts.h"
#include "host/render/scene/render_scene_data.h"
#include "host/session/rendering.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>
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
}

struct RenderPlan {
    RenderJob job; // the same for all frames, but for the frame itself
    PicturePart part;
    std::vector<int> frames;
    FrameNames names;
    FileSettings files; // how the pictures are stored
};

void takePart(const PicturePart &part, RenderJob &job) {
    if (part.count == 1) return;
    try {
        if (part.by == PartsBy::tiles) {
            job.part = pixelsOfPart(regionOf(job), part);
        } else {
            const SampleRange samples = samplesOfPart(job.samples, part);
            job.firstSample = samples.first;
            job.endSample = samples.end;
        }
    } catch (const InputError &error) {
        throw UsageError(fmt::format("--part: {}", error.message()));
    }
}

RenderJob planJob(const RenderDescription &scene, const RenderOptions &options, const PicturePart &part) {
    RenderJob job = renderJob(scene);
    job.threads = options.threads;
    job.order = options.order.value_or(RenderOrder::automatic);
    job.seed = options.seed;
    job.lockNoise = options.lockNoise;
    job.filter.shape = options.filter.value_or(FilterShape::box);
    job.filter.width = options.filterWidth.value_or(defaultFilterWidth(job.filter.shape));
    if (job.order == RenderOrder::classic && job.threads > kMaxThreads)
        throw UsageError(fmt::format("--threads: in classic order there can be {} threads at most", int{kMaxThreads}));
    if (options.region) {
        job.region = *options.region;
        if (job.region.right > job.width || job.region.bottom > job.height)
            throw UsageError(fmt::format("--region: the region ends at {},{}, outside the picture of {}x{}",
                                         job.region.right, job.region.bottom, job.width, job.height));
    }
    job.backdropLeftOut = options.alpha;
    job.layers = options.layers;
    takePart(part, job);
    return job;
}

RenderPlan makePlan(const SceneDescription &scene, const RenderOptions &options) {
    const RenderDescription &render = scene.render;
    // Nodes always see the scene's own first and last frames, so that a frame does not depend on the others of a job.
    std::vector<int> frames = options.frames ? options.frames->frames(render.frameStep)
                                             : framesBetween(render.firstFrame, render.lastFrame, render.frameStep);
    const bool several = frames.size() > 1;
    PicturePart part = options.part.value_or(PicturePart{});
    part.by = options.partsBy.value_or(PartsBy::tiles);
    return {.job = planJob(render, options, part),
            .part = part,
            .frames = std::move(frames),
            .names = FrameNames(options.output.empty() ? scene.name + ".png" : options.output, several),
            .files = {}};
}

// The files of frames differ in their number only, so that the lowest or the highest has the longest name: where these
// two can be written, those between can be, too, unless something else has such a name.
void prepareOutputs(const RenderPlan &plan, const SceneDescription &scene) {
    const auto [lowest, highest] = std::ranges::minmax_element(plan.frames);
    for (const int frame : {*lowest, *highest}) prepareOutput(plan.names(frame));
    for (const int frame : plan.frames) {
        const std::string file = plan.names(frame);
        checkOutputName(file);
        refuseToReplaceImages(file, scene.images);
    }
}

// UsageError if a picture that was not named would replace one that was not rendered. Textures often lie beside a mesh
// and have its name.
void refuseToReplaceOthers(const RenderPlan &plan) {
    for (const int frame : plan.frames) {
        const std::string file = plan.names(frame);
        std::error_code error; // a name that cannot be followed is reported when the picture is written
        if (std::filesystem::exists(file, error) && digestOfFile(file).empty())
            throw UsageError(fmt::format("{} exists, and was not rendered by velm; name the picture with -o", file));
    }
}

// Decides how the pictures are stored. UsageError for options that their format cannot satisfy, and if the pictures are
// parts and their format has no room for what puts them together.
void planFiles(const RenderOptions &options, RenderPlan &plan) {
    const std::string file = plan.names(plan.frames.front());
    checkOutputName(file);
    if (plan.part.count > 1 && !holdsParts(file))
        throw UsageError("--part: parts of pictures are EXR files; the output has to end in .exr");
    if (options.alpha && !fileChoices(file).hasAlpha)
        throw UsageError(fmt::format("--alpha: {} files have no alpha; PNG, TIFF and EXR files can have it",
                                     std::filesystem::path(file).extension().string()));
    if (!options.layers.empty() && !fileChoices(file).hasLayers)
        throw UsageError("--layer: only EXR files have layers; the output has to end in .exr");
    plan.files = fileSettings(options.files, file);
}

// UsageError if the log has the name of a picture.
void checkLog(const std::string &log, const RenderPlan &plan) {
    if (log.empty()) return;
    std::error_code error; // a path that cannot be followed is reported when it is opened
    const auto path = std::filesystem::weakly_canonical(log, error);
    for (const int frame : plan.frames)
        if (path == std::filesystem::weakly_canonical(plan.names(frame), error))
            throw UsageError(fmt::format("--log: \"{}\" is the file of a picture", log));
}

// Progress, statistics, warnings and the log of the run.
struct Reporting {
    LogFile log;
    ProgressReport progress;
    TotalStatistics total;
    Warnings warnings;
    int written = 0, skipped = 0; // frames

    Reporting(const ProgramOptions &program, const RenderOptions &options, std::ostream &out, std::ostream &err)
        : log(program.log), progress(err, out, options.progress.value_or(progressStyle(err, options.quiet)),
                                     TimeLimit(options.timeLimit)),
          warnings(options.strict ? Warnings::Policy::strict : Warnings::Policy::goOn, [this](const Warning &warning) {
              progress.note("velm: warning: " + warning.text());
              log.add(LogLevel::warning, warning.text());
          }) {}
    Reporting(const Reporting &) = delete;
    Reporting &operator=(const Reporting &) = delete;

    void skip(int frame, const std::string &file) {
        ++skipped;
        progress.end(fmt::format("{} exists; frame {} is not rendered", file, frame));
        log.add(LogLevel::info, fmt::format("frame {}: {} exists; not rendered", frame, file));
    }

    // All warnings once more, in one line at the end: the earlier lines may have scrolled away.
    void sumUpWarnings() {
        if (!warnings.all().empty()) progress.note("velm: " + warnings.summary());
    }
};

std::string partText(const PicturePart &part) {
    if (part.count == 1) return {};
    return fmt::format("{}/{} by {}", part.number, part.count, part.by == PartsBy::tiles ? "tiles" : "samples");
}

// A JSON array of names, for a picture with this layer, which has their numbers; else empty.
template <class Things, class NameOf>
std::string namesFor(const char *layer, const RenderJob &job, const Things &things, NameOf nameOf) {
    if (std::ranges::count(job.layers, layer) == 0) return {};
    Json names = Json::array();
    for (const auto &thing : things) names.push_back(nameOf(thing));
    return names.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The headers of the pictures, without the digest.
PictureMetadata metadataOf(const ProgramOptions &program, const RenderOptions &options, const RenderPlan &plan,
                           const Session &session, const std::string &module) {
    const RenderSceneData &scene = session.renderScene().data();
    const RenderJob &job = plan.job;
    const SamplesOfPart samples = {
        .first = job.firstSample, .end = job.firstSample + samplesOf(job), .count = job.samples};
    return {.scene = options.scene,
            .module = module,
            .version = "velm " VELM_VERSION,
            .command = pictureCommand(program.words),
            .digest = {},
            .part = partText(plan.part),
            .samples = samplesText(samples),
            .seed = std::to_string(job.seed),
            .workflow = workflowText(session.scene().render.workflow),
            .backdrop = job.backdropLeftOut ? kBackdropLeftOut : "",
            .objects = namesFor("object", job, scene.objects, [](const auto &object) { return object.item->name; }),
            .surfaces =
                namesFor("surface", job, scene.surfaces, [](const auto &surface) { return surface.surface->name(); })};
}

// Chooses the order of evaluation for all frames, and says why where that is not the usual one. The first frame is
// set. InputError where a picture in parts cannot be the whole picture.
void decideOrder(RenderPlan &plan, Rendering &rendering, Reporting &reporting) {
    const OrderChoice choice = rendering.decideOrder(plan.job);
    if (plan.job.order == RenderOrder::automatic && choice.order == RenderOrder::classic) {
        if (plan.part.count > 1)
            throw InputError({.file = rendering.sceneFile()},
                             fmt::format("the picture cannot be rendered in parts: {}; --order repeatable renders it "
                                         "with a state that begins anew in each tile",
                                         choice.reason));
        const std::string note = fmt::format("rendered in classic order, since {}", choice.reason);
        reporting.progress.note("velm: note: " + note);
        reporting.log.add(LogLevel::info, note);
    }
    plan.job.order = choice.order;
}

// Renders the current frame and writes it when it is complete; false when it was stopped before.
bool renderAndWrite(int number, const RenderPlan &plan, Rendering &rendering, const PictureMetadata &metadata,
                    Reporting &reporting) {
    const Frame frame = rendering.render(plan.job, &reporting.progress);
    reporting.total.add(frame.statistics);
    if (!frame.complete || InterruptGuard::interrupted()) return false;
    const std::string file = plan.names(number);
    writePicture(frame.picture, file, metadata, plan.files);
    ++reporting.written;
    reporting.progress.end(fmt::format("{}, {} x {}, in {}", file, plan.job.width, plan.job.height,
                                       durationText(frame.statistics.seconds)));
    reporting.log.add(LogLevel::info, fmt::format("frame {}: {} written in {:.3f} s, {} rays", number, file,
                                                  frame.statistics.seconds, frame.statistics.rays.total()));
    return true;
}

// Renders all frames but those that another process has finished in the meantime; false when it was stopped.
bool renderFrames(RenderPlan plan, Session &session, PictureMetadata metadata, const PictureDigest &digest,
                  bool skipExisting, Reporting &reporting) {
    const InterruptGuard guard;
    Rendering rendering(session);
    rendering.setFrame(plan.frames.front());
    decideOrder(plan, rendering, reporting);
    for (std::size_t i = 0; i < plan.frames.size(); ++i) {
        const int number = plan.frames[i];
        metadata.digest = digest.of(number);
        if (skipExisting && isCurrentPicture(plan.names(number), metadata.digest)) {
            reporting.skip(number, plan.names(number));
            continue;
        }
        if (InterruptGuard::interrupted() || reporting.progress.isTimeUp()) return false;
        const std::string title = plan.frames.size() > 1
                                      ? fmt::format("frame {} ({} of {})", number, i + 1, plan.frames.size())
                                      : fmt::format("frame {}", number);
        rendering.setFrame(number);
        reporting.log.add(LogLevel::info, title + " begins");
        reporting.progress.begin(title, {.index = i, .count = plan.frames.size()});
        if (!renderAndWrite(number, plan, rendering, metadata, reporting)) return false;
    }
    return true;
}

// Tells what the file does not bring.
void tellAdditions(const OpenedFile &opened, const SceneDescription &completed, Reporting &reporting) {
    const std::string note = additionsNote(opened, completed);
    if (note.empty()) return;
    reporting.progress.note("velm: note: " + note);
    reporting.log.add(LogLevel::info, note);
}

// Builds the scene and renders it; false when it was stopped.
bool renderScene(const ProgramOptions &program, const RenderOptions &options, RenderPlan plan, const OpenedFile &opened,
                 const PictureDigest &digest, MeshCache &meshes, Reporting &reporting) {
    const ListedModule module(program.module);
    std::optional<Session> session;
    withOverrides(options, [&] {
        session.emplace(completeFile(opened, meshes, reporting.warnings), reporting.warnings, &meshes);
    });
    checkWorkflow(options.files, session->scene().render.workflow);
    plan.job.camera = session->scene().render.camera;
    tellAdditions(opened, session->scene(), reporting);
    overrideSettings(options, *session);
    reporting.total.prepared(session->renderScene().pointCount());
    reporting.log.add(LogLevel::info, fmt::format("prepared: {} points; module {}", session->renderScene().pointCount(),
                                                  module.path()));
    const PictureMetadata metadata = metadataOf(program, options, plan, *session, module.path());
    return renderFrames(plan, *session, metadata, digest, options.skipExisting, reporting);
}

// Leaves frames out whose pictures exist before the scene is opened, which takes time.
void skipExisting(RenderPlan &plan, const PictureDigest &digest, Reporting &reporting) {
    std::erase_if(plan.frames, [&](int frame) {
        const std::string file = plan.names(frame);
        if (!isCurrentPicture(file, digest.of(frame))) return false;
        reporting.skip(frame, file);
        return true;
    });
}

int endStopped(const RenderOptions &options, Reporting &reporting) {
    if (!InterruptGuard::interrupted())
        throw MachineError(
            fmt::format("the time limit of {} s has passed; frames written: {}", options.timeLimit, reporting.written));
    constexpr const char *kMessage = "interrupted; the frame that was under way is not written";
    reporting.log.add(LogLevel::error, kMessage);
    reporting.progress.end(fmt::format("velm: {}", kMessage));
    return kExitInterrupted;
}

int run(const ProgramOptions &program, const RenderOptions &options, std::ostream &out, std::ostream &err) {
    Reporting reporting(program, options, out, err);
    MeshCache meshes;
    OpenedFile opened = openScene(options, meshes);
    const SceneDescription &scene = opened.scene;
    applyOptions(options, opened.scene.render);
    RenderPlan plan = makePlan(scene, options);
    planFiles(options, plan);
    prepareOutputs(plan, scene);
    if (options.output.empty() && !opened.reader->isScene) refuseToReplaceOthers(plan);
    checkLog(program.log, plan);
    reporting.log.prepare();
    reporting.log.add(LogLevel::info, fmt::format("velm " VELM_VERSION ": velm {}", fmt::join(program.words, " ")));
    const PictureDigest digest(plan.names(plan.frames.front()), scene, options, plan.job, program.module);
    if (options.skipExisting) skipExisting(plan, digest, reporting);
    const bool complete = plan.frames.empty() || renderScene(program, options, plan, opened, digest, meshes, reporting);
    reporting.sumUpWarnings();
    if (!complete) return endStopped(options, reporting);
    reporting.log.add(LogLevel::info, fmt::format("done: frames written: {}, not rendered: {}; peak memory {:.1f} MiB",
                                                  reporting.written, reporting.skipped, peakMemory()));
    if (options.stats) options.json ? reporting.total.printAsJson(out) : reporting.total.print(out);
    return kExitDone;
}

} // namespace

constinit const Command renderCommand = makeCommand<RenderOptions, declareRenderOptions, run>(
    {.name = "render", .help = "Render a scene, an object or a mesh"});

} // namespace velm::host
