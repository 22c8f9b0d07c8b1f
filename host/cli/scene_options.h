// The options by which commands open a scene for rendering.
#pragma once

#include "host/cli/command.h"
#include "host/cli/option_types.h"
#include "host/open/open_file.h"
#include "host/scene/overrides.h"
#include "host/session/session.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace velm::host {

// What completes a file to a scene, or replaces what the file has.
struct CompletionOptions : SceneSource {
    std::string camera;               // empty: the scene's
    std::optional<View> view;         // the view of a camera that is added
    std::optional<Rig> rig;           // replaces the lights
    std::optional<Workflow> workflow; // replaces the scene's
    std::optional<int> subdivision;   // replaces that of all meshes
};

struct SceneOptions : CompletionOptions {
    std::vector<SceneOverride> overrides; // of --set
};

// --subdivision: the level of subdivision surfaces.
void addSubdivision(CLI::App &command, std::optional<int> &level);
// --camera, --view, --rig, --workflow and --subdivision.
void declareCompletion(CLI::App &command, CompletionOptions &options);
// FILE, --data, --set, and those of declareCompletion.
void declareSceneOptions(CLI::App &command, SceneOptions &options);

// Opens the file with the values that the options replace. `meshes` takes the mesh of a mesh file. InputError for the
// file, UsageError for the options.
OpenedFile openCompletable(const CompletionOptions &options, MeshCache &meshes,
                           std::span<const SceneOverride> overrides = {});
// The same with the values of --set, except for settings of nodes and surfaces: see overrideSettings. UsageError for a
// value of --set that is wrong.
OpenedFile openScene(const SceneOptions &options, MeshCache &meshes);

// A line that says what was added to the completed scene because the file does not bring it; empty for scenes.
std::string additionsNote(const OpenedFile &opened, const SceneDescription &completed);

// Does work with the scene, such as opening a session; errors in values of --set become UsageErrors that name them.
void withOverrides(const SceneOptions &options, const std::function<void()> &work);

// Replaces settings of nodes and surfaces. UsageError. [interface thread; not while rendering]
void overrideSettings(const SceneOptions &options, Session &session);

} // namespace velm::host
