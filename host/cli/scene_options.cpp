#include "host/cli/scene_options.h"

#include "host/base/limits.h"
#include "host/base/names.h"
#include "host/cli/option_types.h"
#include "host/session/override_settings.h"

#include <algorithm>
#include <fmt/format.h>

namespace velm::host {

namespace {

[[noreturn]] void failAt(const SceneOverride &override, const InputError &error) {
    throw UsageError(fmt::format("--set {}: {}", override.text, error.message()));
}

View parseView(const std::string &text) {
    constexpr std::pair<const char *, View> kViews[] = {{"front", View::front},
                                                        {"back", View::back},
                                                        {"left", View::left},
                                                        {"right", View::right},
                                                        {"top", View::top},
                                                        {"bottom", View::bottom},
                                                        {"threequarter", View::threeQuarter}};
    return parseWord("--view", text, kViews);
}

Rig parseRig(const std::string &text) {
    constexpr std::pair<const char *, Rig> kRigs[] = {
        {"studio", Rig::studio}, {"outdoor", Rig::outdoor}, {"none", Rig::none}};
    return parseWord("--rig", text, kRigs);
}

Workflow parseWorkflow(const std::string &text) {
    constexpr std::pair<const char *, Workflow> kWorkflows[] = {{kWorkflowNames[0], Workflow::linear},
                                                                {kWorkflowNames[1], Workflow::classic}};
    return parseWord("--workflow", text, kWorkflows);
}

void selectCamera(const std::string &name, SceneDescription &scene) {
    if (name.empty()) return;
    if (std::ranges::count(scene.cameras, name, &CameraDescription::name) == 0) {
        std::vector<std::string> known;
        for (const CameraDescription &camera : scene.cameras) known.push_back(camera.name);
        throw UsageError(fmt::format("--camera: there is no camera {}{}", inQuotes(name), suggestion(name, known)));
    }
    scene.render.camera = name;
}

} // namespace

void declareSceneOptions(CLI::App &command, SceneOptions &options) {
    addSceneSource(command, options);
    command
        .add_option_function<std::vector<std::string>>(
            "--set",
            [&options](const std::vector<std::string> &texts) {
                for (const std::string &text : texts) {
                    try {
                        options.overrides.push_back(parseOverride(text));
                    } catch (const InputError &error) {
                        throw UsageError(fmt::format("--set: {}", error.message()));
                    }
                }
            },
            "A value that replaces the scene's, by its path in the scene file, such as\n"
            "render.samples=16 or surfaces.Clay.nodes.AO.settings.Max=2; may be given\n"
            "several times. Values are JSON; quote parts of the path that contain dots")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("PATH=VALUE");
    declareCompletion(command, options);
}

void declareCompletion(CLI::App &command, CompletionOptions &options) {
    auto *const camera =
        command.add_option("--camera", options.camera, "The camera to render from; the scene's by default")
            ->type_name("NAME");
    addParsed(command, "--view", options.view, parseView, "VIEW",
              "Frames all objects from the front, back, left, right, top, bottom or threequarter,\n"
              "the default for files without a camera. The front is at -Z")
        ->excludes(camera);
    addParsed(command, "--rig", options.rig, parseRig, "RIG",
              "Lights the objects instead of the file's lights: studio, the default for files\n"
              "without lights; outdoor; or none");
    addParsed(command, "--workflow", options.workflow, parseWorkflow, "NAME",
              "What the values of colours mean: linear (light; 8-bit and 16-bit images are\n"
              "converted from sRGB when read, 8-bit pictures to sRGB when written), or classic\n"
              "(display values; nothing is converted), the default for LightWave's scenes and\n"
              "objects");
    addSubdivision(command, options.subdivision);
}

void addSubdivision(CLI::App &command, std::optional<int> &level) {
    command
        .add_option("--subdivision", level,
                    fmt::format("The level of subdivision surfaces in all object files, 0 to {}: each level\n"
                                "divides the edges of their control cages in two; 0 draws the cages",
                                kMostSubdivision))
        ->check(CLI::Range(0, kMostSubdivision))
        ->type_name("N");
}

void withOverrides(const SceneOptions &options, const std::function<void()> &work) {
    try {
        work();
    } catch (const InputError &error) {
        if (const SceneOverride *override = overrideAt(options.overrides, error.location())) failAt(*override, error);
        throw;
    }
}

OpenedFile openCompletable(const CompletionOptions &options, MeshCache &meshes,
                           std::span<const SceneOverride> overrides) {
    OpenedFile opened = openFile({.file = options.scene,
                                  .path = searchPath(options.data),
                                  .overrides = overrides,
                                  .view = options.view,
                                  .rig = options.rig,
                                  .workflow = options.workflow,
                                  .meshes = &meshes,
                                  .subdivision = options.subdivision});
    selectCamera(options.camera, opened.scene);
    return opened;
}

OpenedFile openScene(const SceneOptions &options, MeshCache &meshes) {
    OpenedFile opened;
    withOverrides(options, [&] { opened = openCompletable(options, meshes, options.overrides); });
    return opened;
}

std::string additionsNote(const OpenedFile &opened, const SceneDescription &completed) {
    const std::string added = additionsText(opened, completed);
    if (added.empty()) return {};
    return fmt::format("{}: added what the file does not bring: {}", opened.scene.file, added);
}

void overrideSettings(const SceneOptions &options, Session &session) {
    for (const SceneOverride &override : options.overrides) {
        try {
            applySettingOverride(session, override);
        } catch (const InputError &error) {
            failAt(override, error);
        }
    }
}

} // namespace velm::host
