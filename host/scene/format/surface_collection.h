// The key "surfaces" of a scene.
#pragma once

#include "host/scene/format/nested.h"

#include <functional>

namespace velm::host {

// Surfaces by name, and "from": an object file whose surfaces are added, except those that are described here. Reading
// only notes the file in the description; see host/scene/own_surfaces.h.
void readSurfaceCollection(const ReadContext &context, const JsonMember &found, SceneDescription &scene);
// Never nothing: a scene file says that it has no surfaces.
std::optional<nlohmann::ordered_json> writeSurfaceCollection(const WriteContext &context,
                                                             const SceneDescription &scene);
nlohmann::ordered_json surfaceCollectionSchema();

// Whether a file is an object of LightWave, by its ending (.lwo) or by its contents. Such a file may have surfaces of
// its own. InputError for a file without this ending that cannot be read.
bool isObjectFile(const std::string &file);

// The name in the scene of a surface of an object file: its own if that is free, else "Wood (chair.lwo)" or
// "Wood (chair.lwo, 2)".
std::string nameInScene(const SavedNetwork &surface, const std::function<bool(const std::string &name)> &isTaken);

} // namespace velm::host
