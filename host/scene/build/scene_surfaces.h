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

// The surfaces of a scene, ready to be initialised, and its images in the image list. Only one object of this class may
// exist at a time, since a program has one image list. Everything is [interface thread; not while rendering] unless
// tagged otherwise.
class SceneSurfaces {
  public:
    // Reads the images, makes the nodes and the networks inside them, applies the settings through the nodes' panels,
    // and then connects the nodes: a panel does not set a control that a connection feeds. Settings that create names,
    // such as those of stores, are applied before popups that choose among the names. Throws InputError with the
    // location in the scene file, what was found and the nearest right name. An image that is missing or damaged is
    // left out of the image list, settings that choose it are not applied, and both are added to `warnings`; with null
    // `warnings` they are errors. `servers` must outlive this object; `scene` and `warnings` need not.
    SceneSurfaces(const SceneDescription &scene, ServerList &servers, Warnings *warnings = nullptr);
    ~SceneSurfaces(); // empties the image list
    SceneSurfaces(const SceneSurfaces &) = delete;
    SceneSurfaces &operator=(const SceneSurfaces &) = delete;

    // By name; null when there is none. Owned by this object.
    Surface *surface(const std::string &name) const;

    // Makes the images that are sequences show the files of that frame. If a file cannot be read, a warning is added
    // and the image is transparent. InputError under the strict policy. [between frames]
    void showFrame(int frame, Warnings &warnings);

    // Forwarded to all surfaces. When one fails to initialise, those before it are cleaned up. The InputError of init
    // and newTime has the location of the surface. [between frames]
    void init(int mode);
    void newTime(int frame, double time); // seconds
    void cleanup();

  private:
    // Empties the image list, also when the constructor throws.
    struct Images {
        ~Images();
    };
    // Destroyed from the last to the first, like the nodes of a network.
    struct Surfaces {
        ~Surfaces();
        std::vector<std::unique_ptr<Surface>> all;
    };
    Images images_;
    std::vector<ImageDescription> sequences_;
    std::vector<SourceLocation> locations_; // of the surfaces
    Surfaces surfaces_;
};

} // namespace velm::host
