// Surfaces as the text of a scene file.
#pragma once

#include "host/scene/format/description.h"

#include <span>
#include <string>

namespace velm::host {

// A scene's text with the images and the surfaces alone: networks, settings, views; without smoothing and sides. What
// is as a scene file has it without a word is left out. Numbers are the shortest that read back to the same double, in
// every locale. Ends with a line break.
std::string writeSurfaces(std::span<const ImageDescription> images, std::span<const SurfaceDescription> surfaces);

} // namespace velm::host
