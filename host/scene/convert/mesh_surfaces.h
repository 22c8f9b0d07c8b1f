// The materials of mesh files as surfaces of a scene.
#pragma once

#include "host/object/mesh_material.h"
#include "host/scene/format/description.h"

#include <functional>
#include <string>

namespace velm::host {

// Describes a material as a surface with the given name: its values as settings, and its textures and vertex colours as
// nodes. `file` is the location in messages. `imageName` returns the name in the scene of a texture's image; a texture
// is left out if that name is empty. [any thread]
SurfaceDescription surfaceOfMaterial(const MeshMaterial &material, const std::string &name, const std::string &file,
                                     const std::function<std::string(const MeshTexture &)> &imageName);

} // namespace velm::host
