// The key "surfaces" of a scene.
#pragma once

#include "host/scene/format/nested.h"

namespace velm::host {

// Reads surfaces by name, and "from": an object file whose own surfaces are added, except those that are described
// here. The file is only noted in the description; see host/scene/own_surfaces.h.
void readSurfaceCollection(const ReadContext &context, const JsonMember &found, SceneDescription &scene);
nlohmann::ordered_json surfaceCollectionSchema();

// True for the name of an object file, which may have surfaces of its own.
bool isObjectFile(const std::string &file);

} // namespace velm::host
