// The cameras and lights of 3DS files.
#pragma once

#include "host/render/geometry/mesh_item.h"

#include <string_view>

namespace velm::host {

// The cameras and lights in the bytes of a 3DS file, with +Z turned up to +Y. Lengths are multiplied by `scale`. Lights
// that are switched off and damaged parts of the file are left out. [any thread]
MeshItems itemsOf3ds(std::string_view bytes, double scale);

} // namespace velm::host
