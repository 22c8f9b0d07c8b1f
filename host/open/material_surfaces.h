// Gives the object of an opened mesh file the surfaces of its materials.
#pragma once

#include "host/render/geometry/mesh.h"
#include "host/scene/format/description.h"
#include "host/scene/format/search_path.h"

namespace velm::host {

// Adds a surface for each material that the mesh's file describes, under a name that the scene does not have yet, to
// the scene and to the object's surfaces, and the images of their textures. Images are looked for as ObjectFinder does;
// a missing one is described with where it was looked for. [any thread]
void addMaterialSurfaces(const Mesh &mesh, const SearchPath &path, ObjectDescription &object, SceneDescription &scene);

} // namespace velm::host
