// Surfaces that a scene does not describe itself: those of object files.
#pragma once

#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

namespace velm::host {

// Adds the surfaces of the object file that the scene names as "from", but for those that the scene describes itself.
// Then gives each object whose mesh is an object file, and for which the scene names no surface, the file's own. The
// images of these files are looked for along the path. InputError with the line of the object or of "from".
void addOwnSurfaces(const SearchPath &path, SceneDescription &scene);

} // namespace velm::host
