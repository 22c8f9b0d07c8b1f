// Surfaces as the text of a scene file.
#pragma once

#include "host/scene/format/description.h"

#include <span>
#include <string>

namespace velm::host {

// The text of a scene file that holds these images and surfaces alone: names and files of the images, as they are;
// settings, networks and views of the surfaces, without their smoothing and sides. Otherwise as writeScene writes them.
// InputError for two images or surfaces of one name.
std::string writeSurfaces(std::span<const ImageDescription> images, std::span<const SurfaceDescription> surfaces);

} // namespace velm::host
