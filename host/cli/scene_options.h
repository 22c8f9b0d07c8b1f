// The options by which commands open a scene for rendering.
#pragma once

#include "host/cli/command.h"
#include "host/cli/option_types.h"
#include "host/open/open_file.h"
#include "host/scene/overrides.h"
#include "host/session/session.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

struct SceneOptions : SceneSource {
    std::vector<SceneOverride> overrides; // of --set
    std::string camera;                   // empty: the scene's
    std::optional<View> view;             // from where the scene is framed
    std::optional<Rig> rig;               // that replaces the lights
};

// FILE, --data, --set, --camera, --view and --rig.
void declareSceneOptions(CLI::App &command, SceneOptions &options);

// Opens the file with the values that the options replace, except for settings of nodes and surfaces: see
// overrideSettings. InputError for the file, UsageError for the options.
OpenedFile openScene(const SceneOptions &options);

// Does work with the scene, such as opening a session; errors in values of --set become UsageErrors that name them.
void withOverrides(const SceneOptions &options, const std::function<void()> &work);

// Replaces settings of nodes and surfaces. UsageError. [interface thread; not while rendering]
void overrideSettings(const SceneOptions &options, Session &session);

} // namespace velm::host
