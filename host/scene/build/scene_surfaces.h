// From a scene's description to its networks of nodes.
#pragma once

#include "host/base/warnings.h"
#include "host/graph/server_list.h"
#include "host/graph/surface.h"
#include "host/scene/format/description.h"

#include <memory>
#include <string>
#include <vector>

namespace velm::host {

// The surfaces of a scene, ready to be initialised, and its images in the image list. One at a time, since the image
// list is the program's one. Everything is for the [interface thread; not while rendering] but what says otherwise.
class SceneSurfaces {
  public:
    // Reads the images, makes the nodes, sets them through their panels and then connects them: a panel does not let
    // go of a control that a connection feeds. Networks inside nodes are made with the nodes. Where one node's popup
    // lists what another node's setting names, the naming comes first, wherever the two stand. Throws InputError with
    // the place in the scene file, what was found and the nearest right name. Images that are missing or damaged, and
    // settings that choose them, are warned of: they stay out of the image list and the settings unmade. Without
    // `warnings` they are errors. `scene` and `warnings` need not outlive the call; `servers` does.
    SceneSurfaces(const SceneDescription &scene, ServerList &servers, Warnings *warnings = nullptr);
    ~SceneSurfaces(); // empties the image list
    SceneSurfaces(const SceneSurfaces &) = delete;
    SceneSurfaces &operator=(const SceneSurfaces &) = delete;

    // By name; null when there is none. Lives as long as this.
    Surface *surface(const std::string &name) const;

    // Forwarded to all surfaces. When the init of one fails, those before it are cleaned up. [between frames]
    void init(int mode);
    void newTime(int frame, double time); // seconds
    void cleanup();

  private:
    // Gives the images back also when the constructor throws.
    struct Images {
        ~Images();
    };
    // Taken down from the last to the first, as the nodes of a network are.
    struct Surfaces {
        ~Surfaces();
        std::vector<std::unique_ptr<Surface>> all;
    };
    Images images_;
    Surfaces surfaces_;
};

} // namespace velm::host
