// Surfaces that object files bring into a scene.
#pragma once

#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

namespace velm::host {

// Adds the surfaces of the object file that the scene names as "from", except those that the scene describes itself.
// Then gives each object whose mesh is an object file, and for which the scene names no surface, the file's own
// surfaces. The files' images are added, too, and looked for along the path. InputError with the line of the object or
// of "from".
void addOwnSurfaces(const SearchPath &path, SceneDescription &scene);

} // namespace velm::host
