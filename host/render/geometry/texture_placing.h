// The placement of textures in glTF files.
#pragma once

#include <assimp/scene.h>

namespace velm::host {

// Corrects the transforms of textures (KHR_texture_transform) of a scene that assimp has read from a glTF file, so that
// its step aiProcess_TransformUVCoords computes the UV coordinates that the extension defines. The importer stores
// transforms that rotate in the other direction, and whose translation is meant to be added last; the step adds it
// first.
void correctTexturePlacing(const aiScene &scene);

} // namespace velm::host
