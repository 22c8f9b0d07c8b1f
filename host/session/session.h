// An open scene: its description, its networks of nodes and its render scene, which change together.
//
// A session is what lies between a scene file and pixels. Commands, benches and tests open one, set a frame, render and
// close it; an editor keeps one open, changes it, renders again, and writes it back.
#pragma once

#include "host/base/warnings.h"
#include "host/render/scene/render_scene.h"
#include "host/scene/build/describe_network.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"
#include "host/session/node_path.h"

#include <set>
#include <string>

namespace velm::host {

class MeshCache;

// Reads any file that host/open/ opens, such as an object file (.lwo), which becomes a scene of that object with its
// own surfaces and without cameras and lights. Meshes and images are looked for beside the file and along the path.
// InputError with the source location. [any thread]
SceneDescription openDescription(const std::string &file, const SearchPath &path);

// Everything is for the [interface thread; not while rendering] but what says otherwise. One session exists at a time,
// since images and the scene that services describe are the program's. The servers of modules that the scene names are
// in the server list before it is opened, and stay there until it is closed.
class Session {
  public:
    // Reads the meshes and images, makes the nodes, and builds the ray structure. InputError, with the source location,
    // for what cannot be opened; what can be opened without a part is warned of. `warnings` outlives the session.
    // Meshes are taken from `meshes` where it has them; it may be null.
    Session(SceneDescription scene, Warnings &warnings, MeshCache *meshes = nullptr);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // The description as opened or last changed by `change`. It does not have the changes to networks and surface
    // values; describe() gives those too.
    const SceneDescription &scene() const { return scene_; }
    const RenderScene &renderScene() const { return renderScene_; }
    Warnings &warnings() { return warnings_; }

    // InputError naming the nearest one.
    Surface &surface(const std::string &name) const;
    SceneSurfaces &surfaces() { return surfaces_; }

    // ---- Changing networks. The ray structure and the meshes stay as they are. InputError leaves all unchanged. ----

    // A setting by its label, in the units that the panel shows: what a person does on the node's panel.
    void setSetting(const NodePath &path, const std::string &label, const SettingValue &value);
    SettingValue setting(const NodePath &path, const std::string &label) const;
    // A surface's own value: "Color", "Diffuse" and so on.
    void setSurfaceValue(const std::string &surface, const std::string &name, const SettingValue &value);

    // Gives the name of the node made: unique in its network, from `name` or, where it is empty, from its kind.
    std::string addNode(const NetworkPath &path, const std::string &server, const std::string &name = {});
    void removeNode(const NodePath &path);
    // Gives the name that the node got: `name`, with a number where that is taken.
    std::string renameNode(const NodePath &path, const std::string &name);
    // Replaces what the input was connected to.
    void connect(const NodePath &from, const std::string &output, const NodePath &to, const std::string &input);
    void disconnect(const NodePath &to, const std::string &input);

    // ---- Changing the scene. Meshes are read and the ray structure is built again only where `geometry` changes. ----

    // Changes the cameras, lights, backdrop, render settings, objects, or the smoothing and sides of surfaces: `change`
    // gets a copy of the description to edit. Networks and settings of surfaces, images, the workflow, and the set
    // of surfaces stay as they are: change networks and settings as above. InputError leaves the session unchanged.
    // Gives what was rebuilt.
    template <class Change>
    SceneWork change(Change change) {
        SceneDescription changed = scene_;
        change(changed);
        return apply(std::move(changed));
    }

    // Makes the images that are sequences show the files of a frame. Warns of files that cannot be read; InputError
    // under the strict policy. [between frames]
    void showFrame(int frame);

    // Moves the items to a time in seconds. Throws InputError where that is impossible, for example because a camera
    // would be at its target; then the items stay where they are.
    void setTime(double time);

    // ---- Writing it back ----

    // The scene as it is now, the changed networks included. The networks stay as they are.
    SceneDescription describe() const;
    // The same as the text of a scene file, with the names of other files relative to `directory`.
    std::string write(const std::string &directory) const;

  private:
    SceneWork apply(SceneDescription changed);
    HostNode &node(const NodePath &path) const;
    Network &network(const NetworkPath &path) const;

    SceneDescription scene_;
    Warnings &warnings_;
    RenderScene renderScene_; // before the nodes, whose panels may list what the scene contains
    SceneSurfaces surfaces_;
    std::set<std::string> changed_; // surfaces whose network is not as described in scene_
};

} // namespace velm::host
