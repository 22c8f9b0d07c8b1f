// The textures of surfaces of LightWave 5 and earlier.
#pragma once

#include "host/object/surface_textures.h"

#include <array>
#include <vector>

namespace velm::host {

// A colour of such an object as fractions: three bytes and a fourth without a meaning. [any thread]
std::array<float, 3> readOldColour(ChunkCursor &cursor);

// The textures among the sub-chunks of a surface of an object of the form LWOB or LWLO, in the order of the file.
// Throws InputError with the byte's offset for what is too short. [any thread]
std::vector<SurfaceTexture> readOldTextures(const IffFile &file, const std::vector<Chunk> &subChunks);

} // namespace velm::host
