// Surfaces for the materials of an opened mesh file.
#pragma once

#include "host/render/geometry/mesh.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

namespace velm::host {

// Adds a surface for each material that the mesh's file describes to the scene, under a name that no surface has yet,
// and to the object's surfaces. Adds the images of the materials' textures to the scene, too. Their files are looked
// for as ObjectFinder does; ImageDescription::notFound of a missing one says where. [any thread]
void addMaterialSurfaces(const Mesh &mesh, const SearchPath &path, ObjectDescription &object, SceneDescription &scene);

} // namespace velm::host
