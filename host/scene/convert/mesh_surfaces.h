// The materials of mesh files as surfaces of a scene.
#pragma once

#include "host/object/mesh_material.h"
#include "host/scene/format/description.h"

#include <functional>
#include <string>

namespace velm::host {

// Describes a material as a surface of that name: its values as settings, and its textures as nodes. `imageName` gives
// the name in the scene of the image of a texture; a texture for which it is empty is left out. [any thread]
SurfaceDescription surfaceOfMaterial(const MeshMaterial &material, const std::string &name, const std::string &file,
                                     const std::function<std::string(const MeshTexture &)> &imageName);

} // namespace velm::host
