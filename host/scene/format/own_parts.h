// The parts of a scene that object files bring by themselves.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host {

// The scene without the surfaces, the images, and the entries of objects' surfaces that reading adds by itself. For the
// rules and the errors see writeScene.
SceneDescription withoutOwnParts(const SceneDescription &scene);

} // namespace velm::host
