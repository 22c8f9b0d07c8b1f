// A surface's own values, which are settings in a scene file and sub-chunks in an object file.
#pragma once

#include "host/files/object_file.h"
#include "host/scene/build/describe_network.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// Puts the values of a surface's sub-chunks, with the keys of their envelopes, into its description. A colour whose
// components have different keys stays constant. Values without a sub-chunk stay as they are, except the smoothing
// angle: a surface without it is flat.
void describeValues(const SurfaceChunkValues &values, SurfaceDescription &surface);

// Whether the description's settings, and the defaults of settings that it does not mention, are those values.
bool hasValues(const SurfaceDescription &surface, const SurfaceChunkValues &values, const DefaultSettings &defaults);

// The sub-chunks of a new surface: values, smoothing angle and sides. An animated value becomes that of its first key.
std::string subChunksOf(const SurfaceDescription &surface, const DefaultSettings &defaults);

} // namespace velm::host
