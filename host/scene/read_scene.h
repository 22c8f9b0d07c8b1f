// Reading a scene file.
#pragma once

#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

#include <string>
#include <string_view>

namespace velm::host {

// Reads a scene file whole. Throws InputError with the file's name as given, the line, what was found and what was
// expected: for a file that cannot be read or is no JSON, unknown or repeated keys, wrong values, meshes that are not
// there, and names (of surfaces, images, cameras, nodes) that the scene does not have. An image's file that is not
// there is noted in its description.
SceneDescription readScene(const std::string &file, const SearchPath &path);

// The same for a text that stands in `file`.
SceneDescription readSceneText(std::string_view text, const std::string &file, const SearchPath &path);

// The same for a scene that may be without cameras, as one is that tells surfaces alone.
SceneDescription readSurfaces(const std::string &file, const SearchPath &path);

// The JSON Schema of the format, as kept in docs/scene.schema.json; ends with a line break.
std::string sceneSchema();

} // namespace velm::host
