// The surfaces of objects of LightWave 5 and earlier, whose sub-chunks differ from those of LWO2. They have no
// networks.
#pragma once

#include "host/object/surface_textures.h"
#include "host/object/surface_values.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct OldSurface {
    std::string name;
    SurfaceChunkValues values;
    std::vector<SurfaceTexture> textures; // in order of the file; each replaces the value of its channel
};

// Whether these bytes of an object file begin with the form LWOB or LWLO.
bool isOldObject(std::string_view bytes);

// The surfaces of such a file, in order; `file` is its name, for errors. Their values are converted to the units of
// LWO2. Smoothing and sides, which are flags in these files, are never nothing. Throws InputError with the byte's
// offset. [any thread]
std::vector<OldSurface> readOldSurfaces(std::string_view bytes, const std::string &file);

} // namespace velm::host
