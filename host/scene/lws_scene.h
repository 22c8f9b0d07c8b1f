// LightWave's scene files as scenes of ours.
#pragma once

#include "host/base/warnings.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

#include <string>
#include <vector>

namespace velm::host {

// Reads a LightWave scene with the surfaces of its objects. The objects are looked for as ObjectFinder does, their
// images along the path. Names that several items have get numbers. What the scene has and this host does not goes to
// `warnings`, a line for each kind. A scene may be without objects, lights or cameras. InputError with the file and the
// line: for a scene that is damaged, an object that is not found or damaged, and a layer that an object does not have.
SceneDescription readLwsScene(const std::string &file, const SearchPath &path, std::vector<Warning> &warnings);

} // namespace velm::host
