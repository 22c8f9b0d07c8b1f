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

// True for the name of an object file (.lwo), which may have surfaces of its own.
bool isObjectFile(const std::string &file);

// The name in the scene of a surface of an object file: its own if that is free, else "Wood (chair.lwo)" or
// "Wood (chair.lwo, 2)".
std::string nameInScene(const SavedNetwork &surface, const std::function<bool(const std::string &name)> &isTaken);

} // namespace velm::host
