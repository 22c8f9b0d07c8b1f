#include "host/cli/scene_options.h"

#include "host/base/names.h"
#include "host/cli/option_types.h"
#include "host/scene/read_scene.h"
#include "host/session/override_settings.h"

#include <algorithm>
#include <fmt/format.h>

namespace velm::host {

namespace {

[[noreturn]] void failAt(const SceneOverride &override, const InputError &error) {
    throw UsageError(fmt::format("--set {}: {}", override.text, error.message()));
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
    command.add_option("--camera", options.camera, "The camera to render from; the scene's by default")
        ->type_name("NAME");
}

void withOverrides(const SceneOptions &options, const std::function<void()> &work) {
    try {
        work();
    } catch (const InputError &error) {
        if (const SceneOverride *override = overrideAt(options.overrides, error.location())) failAt(*override, error);
        throw;
    }
}

SceneDescription openScene(const SceneOptions &options) {
    SceneDescription scene;
    withOverrides(options, [&] { scene = readScene(options.scene, searchPath(options.data), options.overrides); });
    selectCamera(options.camera, scene);
    return scene;
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
