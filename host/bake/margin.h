// The margin around what is baked: colours for the texels just outside the triangles, which filters of textures read.
#pragma once

#include "host/bake/texel_raster.h"
#include "host/image/picture.h"

#include <cstdint>
#include <functional>

namespace velm::host {

// Sets the colours of the texels without alpha whose middle is at most `margin` texels from the wanted triangles; their
// alpha stays 0, and texels with alpha are only read. Beyond an edge of the map that is also an edge of another part of
// the map, where the mesh goes on, a texel gets the colour of that part at the same distance behind the edge, so that
// filters do not show the seam. Beyond other edges, it gets the colour of the nearest texel with alpha.
// [interface thread; not while rendering]
void fillMargin(Picture &picture, const TexelMap &map, const std::function<bool(std::uint32_t triangle)> &isWanted,
                int margin);

} // namespace velm::host
