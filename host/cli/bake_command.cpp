// "velm bake": values of surfaces as pictures of a UV map, or at the vertices of a mesh.
#include "host/bake/bake_texture.h"
#include "host/base/error.h"
#include "host/base/warnings.h"
#include "host/cli/bake_options.h"
#include "host/cli/commands.h"
#include "host/cli/frame_names.h"
#include "host/cli/interrupt.h"
#include "host/cli/output_file.h"
#include "host/cli/picture_command.h"
#include "host/cli/progress.h"
#include "host/cli/statistics.h"
#include "host/cli/vertex_bake.h"
#include "host/graph/listed_module.h"
#include "host/session/rendering.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <ostream>

namespace velm::host {

namespace {

struct BakePlan {
    RenderJob job; // the same for all frames, but for the frame itself
    std::vector<int> frames;
    FrameNames names;
};

BakePlan planBake(const SceneDescription &scene, const BakeOptions &options) {
    std::vector<int> frames =
        options.frames ? options.frames->frames(scene.render.frameStep) : std::vector<int>{scene.render.firstFrame};
    RenderJob job = renderJob(scene.render);
    const PictureSize size = options.size.value_or(PictureSize{.width = kUsualBakeSide, .height = kUsualBakeSide});
    job.width = size.width;
    job.height = size.height;
    job.region = {};
    job.samples = options.samples;
    job.threads = options.threads;
    job.seed = options.seed;
    job.camera = scene.render.camera;
    const bool several = frames.size() > 1;
    return {.job = job, .frames = std::move(frames), .names = FrameNames(options.file, several)};
}

void prepareBakeOutputs(const BakePlan &plan, const SceneDescription &scene, bool areVertices) {
    if (areVertices) {
        for (const int frame : plan.frames) prepareVertexOutput(plan.names(frame), scene);
        return;
    }
    const auto [lowest, highest] = std::ranges::minmax_element(plan.frames);
    for (const int frame : {*lowest, *highest}) prepareOutput(plan.names(frame));
    for (const int frame : plan.frames) {
        const std::string file = plan.names(frame);
        checkOutputName(file);
        refuseToReplaceImages(file, scene.images);
    }
}

// Finds something by its name in an option; an error becomes a UsageError that names the option.
template <class Find>
auto forBakeOption(const char *option, Find find) {
    try {
        return find();
    } catch (const InputError &error) {
        throw UsageError(fmt::format("{}: {}", option, error.message()));
    }
}

BakeTarget resolveTarget(const RenderSceneData &scene, const BakeOptions &options) {
    BakeTarget target;
    target.object = forBakeOption("--object", [&] { return findObject(scene, options.object); });
    target.surfaces = forBakeOption("--surface", [&] { return findSurfaces(scene, target.object, options.surfaces); });
    return target;
}

BakedValue resolveValue(const RenderSceneData &scene, const BakeTarget &target, const RenderJob &job,
                        const BakeOptions &options) {
    BakedValue value = forBakeOption("--output", [&] { return BakedValue(scene, options.output, target.surfaces); });
    forBakeOption("--from-direction", [&] { return Viewer(scene, job, options.viewer); });
    return value;
}

TextureBake resolve(const RenderSceneData &scene, const RenderJob &job, const BakeOptions &options) {
    TextureBake bake{.target = resolveTarget(scene, options),
                     .output = options.output,
                     .viewer = options.viewer,
                     .margin = options.margin};
    bake.uvMap = forBakeOption("--uv", [&] { return findUvMap(scene, bake.target.object, options.uvMap); });
    const BakedValue value = resolveValue(scene, bake.target, job, options);
    if (options.space && value.kind() != BakedKind::normal)
        throw UsageError("--space: only normals have coordinates; bake Normal");
    bake.space = options.space.value_or(NormalSpace::tangent);
    return bake;
}

VertexJob resolveVertices(const RenderSceneData &scene, const BakePlan &plan, const BakeOptions &options) {
    const BakeTarget target = resolveTarget(scene, options);
    const BakedKind kind = resolveValue(scene, target, plan.job, options).kind();
    std::vector<std::string> files;
    for (const int frame : plan.frames) files.push_back(plan.names(frame));
    try {
        return vertexJob(scene, target, kind, options, files);
    } catch (const InputError &error) {
        if (!error.location().file.empty()) throw; // about the mesh's file
        throw UsageError(error.message());
    }
}

bool holdsNegativeNumbers(const std::string &file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".exr";
}

// Bakes frames of an open scene.
class BakeRun {
  public:
    BakeRun(const ProgramOptions &program, const BakeOptions &options, std::ostream &out, std::ostream &err)
        : program_(program), options_(options),
          progress_(err, out, options.progress.value_or(progressStyle(err, options.quiet)), TimeLimit(0)),
          warnings_(options.strict ? Warnings::Policy::strict : Warnings::Policy::goOn,
                    [this](const Warning &warning) { progress_.note("velm: warning: " + warning.text()); }) {}
    BakeRun(const BakeRun &) = delete;
    BakeRun &operator=(const BakeRun &) = delete;

    // Opens the file and bakes it; false when it was interrupted.
    bool run() {
        MeshCache meshes;
        OpenedFile opened = openScene(options_, meshes);
        // A rig that nobody asked for has a ground, which would shade the object.
        if (opened.rig && !options_.rig && !opened.reader->isScene) opened.rig = Rig::none;
        // The ground of one that was asked for is not to be baked.
        if (options_.object.empty() && opened.scene.objects.size() == 1)
            options_.object = opened.scene.objects.front().name;
        BakePlan plan = planBake(opened.scene, options_);
        prepareBakeOutputs(plan, opened.scene, !options_.vertexMap.empty());
        const ListedModule module(program_.module);
        std::optional<Session> session;
        withOverrides(options_, [&] { session.emplace(completeFile(opened, meshes, warnings_), warnings_, &meshes); });
        plan.job.camera = session->scene().render.camera;
        overrideSettings(options_, *session);
        total_.prepared(session->renderScene().pointCount());
        const bool complete =
            options_.vertexMap.empty() ? bakeTextures(plan, *session, module.path()) : bakeVertexMaps(plan, *session);
        if (!warnings_.all().empty()) progress_.note("velm: " + warnings_.summary());
        return complete;
    }

    ProgressReport &progress() { return progress_; }
    const TotalStatistics &total() const { return total_; }

  private:
    // Calls `bakeFrame` for each frame, which gives a line that says what it wrote, or nothing if it was stopped.
    bool bakeFrames(BakePlan &plan, Session &session,
                    const std::function<std::optional<std::string>(const std::string &file)> &bakeFrame) {
        const InterruptGuard guard;
        Rendering rendering(session);
        for (std::size_t i = 0; i < plan.frames.size(); ++i) {
            if (InterruptGuard::interrupted()) return false;
            const int number = plan.frames[i];
            rendering.setFrame(number);
            rendering.prepare(plan.job);
            progress_.begin(fmt::format("frame {}", number), {.index = i, .count = plan.frames.size()});
            const std::optional<std::string> done = bakeFrame(plan.names(number));
            rendering.warnOfCircles();
            if (!done) return false;
            progress_.end(*done);
        }
        return true;
    }

    bool bakeTextures(BakePlan &plan, Session &session, const std::string &module) {
        const TextureBake bake = resolve(session.renderScene().data(), plan.job, options_);
        return bakeFrames(plan, session, [&](const std::string &file) -> std::optional<std::string> {
            BakedTexture baked = bakeTexture(session.renderScene(), plan.job, bake, warnings_, &progress_);
            total_.add(baked.statistics);
            if (!baked.complete || InterruptGuard::interrupted()) return std::nullopt;
            write(baked, file, session.scene().render.workflow, module);
            return fmt::format("{}, {} x {}, in {}", file, plan.job.width, plan.job.height,
                               durationText(baked.statistics.seconds));
        });
    }

    bool bakeVertexMaps(BakePlan &plan, Session &session) {
        const VertexJob vertices = resolveVertices(session.renderScene().data(), plan, options_);
        return bakeFrames(plan, session, [&](const std::string &file) -> std::optional<std::string> {
            const BakedVertices baked =
                bakeVertexFile(session, plan.job, vertices, options_.vertexMap, file, progress_);
            total_.add(baked.statistics);
            if (!baked.complete) return std::nullopt;
            return fmt::format("{}, {} places at vertices, in {}", file, baked.count,
                               durationText(baked.statistics.seconds));
        });
    }

    void write(BakedTexture &baked, const std::string &file, Workflow workflow, const std::string &module) const {
        if (baked.kind == BakedKind::normal && !holdsNegativeNumbers(file)) encodeNormals(baked.picture);
        PictureMetadata metadata;
        metadata.scene = options_.scene;
        metadata.module = module;
        metadata.version = "velm " VELM_VERSION;
        metadata.command = pictureCommand(program_.words);
        metadata.seed = std::to_string(options_.seed);
        metadata.workflow = workflowText(workflow);
        metadata.isData = baked.kind != BakedKind::colour;
        writePicture(baked.picture, file, metadata);
    }

    const ProgramOptions &program_;
    BakeOptions options_;
    ProgressReport progress_;
    TotalStatistics total_;
    Warnings warnings_;
};

int run(const ProgramOptions &program, const BakeOptions &options, std::ostream &out, std::ostream &err) {
    BakeRun bake(program, options, out, err);
    if (!bake.run()) {
        bake.progress().end("velm: interrupted; the frame that was under way is not written");
        return kExitInterrupted;
    }
    if (options.stats) options.json ? bake.total().printAsJson(out) : bake.total().print(out);
    return kExitDone;
}

} // namespace

constinit const Command bakeCommand = makeCommand<BakeOptions, declareBakeOptions, run>(
    {.name = "bake", .help = "Bake values of surfaces into a picture of a UV map, or into the vertices of a mesh"});

} // namespace velm::host
