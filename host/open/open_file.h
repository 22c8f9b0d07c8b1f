// Opening any file that can be rendered: scenes, objects and meshes.
#pragma once

#include "host/base/warnings.h"
#include "host/open/file_reader.h"
#include "host/open/framing.h"
#include "host/open/rig.h"
#include "host/render/geometry/mesh_cache.h"

#include <optional>
#include <span>
#include <string>

namespace velm::host {

// What is wanted of a file besides its contents.
struct OpenRequest {
    std::string file;
    SearchPath path{};                          // where to look for the files that this one names
    std::span<const SceneOverride> overrides{}; // see readScene
    std::optional<View> view{};                 // a camera that frames the scene from there
    std::optional<Rig> rig{};                   // replaces the lights
    std::optional<Workflow> workflow{};         // replaces that of the scene or of the kind of file
    MeshCache *meshes = nullptr;                // gets the mesh if it is read for its materials; null: it is freed
    std::optional<int> subdivision{};           // of all meshes, 0 to kMostSubdivision; replaces that of the file
};

// A file as it was read, and what is still to be added to it.
struct OpenedFile {
    SceneDescription scene;
    const FileReader *reader = nullptr; // never null
    std::optional<View> view;           // of a camera to be added
    std::optional<Rig> rig;             // that replaces the lights
    std::vector<Warning> warnings{};    // of what the reader left out of the file
    double exposure = 1;                // the factor by which the file's lights were scaled: see exposeLights
    std::string neutral{};              // the surface that was added for objects without one; empty: none was
};

// Reads a file, but not the meshes that it names; a mesh file brings its materials as surfaces, its cameras and its
// lights, which are scaled to give a picture that is neither black nor white. A scene (JSON) gets what the request asks
// for. Any other file also gets a camera from a three-quarter view and the studio rig if it has no camera or no lights.
// InputError with the source location. [interface thread]
OpenedFile openFile(const OpenRequest &request);

// Sets the level of the subdivision surfaces of all meshes from files. [any thread]
void setSubdivision(int level, SceneDescription &scene);

// The scene with all that is to be added: a camera for pictures of the scene's size, lights, a surface for polygons
// that have none, and, unless the file is a scene, a backdrop, and with a rig a ground. The added camera becomes the
// scene's. Warns of what a reader left out. Meshes that are read for their bounds stay in `meshes`. InputError with the
// source location. [interface thread]
SceneDescription completeFile(const OpenedFile &opened, MeshCache &meshes, Warnings &warnings);

// What was added to the completed scene because the file does not have it, as a text for users: "a camera
// (three-quarter view), lights (studio), ...". Empty for scenes (JSON).
std::string additionsText(const OpenedFile &opened, const SceneDescription &completed);

// The bounds of all objects in world space. Meshes are taken from `meshes`, and those that it does not have are made
// there. InputError for a mesh that cannot be read, and for a scene without objects or with points that are not finite.
// [interface thread]
Bounds boundsOf(const SceneDescription &scene, MeshCache &meshes);

} // namespace velm::host
