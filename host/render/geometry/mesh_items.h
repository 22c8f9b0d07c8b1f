// The cameras and lights of the scenes that assimp reads.
#pragma once

#include "host/object/losses.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/mesh_item.h"

#include <assimp/scene.h>

#include <string>

namespace velm::host {

// The cameras and lights of the scene of a file, mirrored in Z to left-handed axes. Those of formats whose conventions
// are not known here are added to `losses`, and so are cameras without perspective or field of view, and lights of
// other kinds. To be called in a process of its own: see readApart.
MeshItems itemsOf(const aiScene &scene, const std::string &file, const MeshFormat &format, Losses &losses);

} // namespace velm::host
