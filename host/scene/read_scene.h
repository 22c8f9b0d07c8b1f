// Reading a scene file.
#pragma once

#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"
#include "host/scene/overrides.h"

#include <span>
#include <string>
#include <string_view>

namespace velm::host {

// Whether a scene file may be without cameras.
enum class Cameras { required, optional };

// Reads a whole scene file. Throws InputError with the file's name as given, the line, what was found and what was
// expected: for a file that cannot be read or is not JSON, unknown or repeated keys, wrong values, missing meshes, and
// names (of surfaces, images, cameras, nodes) that the scene does not have. A missing image file is no error; the
// image's description says why it was not found. `overrides` replace values of the file, but for settings; errors in
// them are those of overrideValues.
SceneDescription readScene(const std::string &file, const SearchPath &path,
                           std::span<const SceneOverride> overrides = {}, Cameras cameras = Cameras::required);

// The same for the text of a file named `file`, which is not read.
SceneDescription readSceneText(std::string_view text, const std::string &file, const SearchPath &path,
                               std::span<const SceneOverride> overrides = {}, Cameras cameras = Cameras::required);

// The same for a scene of which only the surfaces are used: it needs no cameras.
SceneDescription readSurfaces(const std::string &file, const SearchPath &path);

// The JSON Schema of the format, which is published as docs/scene.schema.json. Ends with a line break.
std::string sceneSchema();

} // namespace velm::host
