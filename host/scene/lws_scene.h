// Converts LightWave scene files to scene descriptions.
#pragma once

#include "host/base/warnings.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

#include <string>
#include <vector>

namespace velm::host {

// Reads a LightWave scene and the surfaces of its objects. ObjectFinder finds the objects; their images are searched
// for along the path. Names that several items have get numbers. `warnings` receives one warning for each kind of
// feature that is not supported. The scene may have no objects, lights or cameras. InputError with the file and the
// line for a damaged scene, an object that is damaged or not found, and a layer that an object does not have.
SceneDescription readLwsScene(const std::string &file, const SearchPath &path, std::vector<Warning> &warnings);

} // namespace velm::host
