// Surfaces that a scene does not describe itself: those of object files.
#pragma once

#include "host/scene/nested.h"

namespace velm {

// "surfaces": surfaces by name, and "from", an object file whose own surfaces come in addition. One that is described
// takes the place of one of the same name from the file.
void readSurfaceCollection(const ReadContext &context, const JsonMember &found, SceneDescription &scene);
nlohmann::ordered_json surfaceCollectionSchema();

// True for the name of an object file, which may have surfaces of its own.
bool isObjectFile(const std::string &file);

// Gives each object whose mesh is an object file, and that is not told its surface, the file's own. InputError with the
// object's line.
void addOwnSurfaces(const ReadContext &context, SceneDescription &scene);

} // namespace velm
