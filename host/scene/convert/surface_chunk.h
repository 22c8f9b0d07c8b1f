// A surface's own values: settings of a scene file, sub-chunks of an object file.
#pragma once

#include "host/files/object_file.h"
#include "host/scene/build/describe_network.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// Puts the values of a surface's sub-chunks into its description; what has no sub-chunk stays. A surface without an
// angle is flat.
void describeValues(const SurfaceChunkValues &values, SurfaceDescription &surface);

// Whether the settings of the description, with what is usual for the others, are those values.
bool agrees(const SurfaceDescription &surface, const SurfaceChunkValues &values, const UsualSettings &usual);

// The sub-chunks of a new surface: values, angle and sides. A value that has keys gets that of the first.
std::string subChunksOf(const SurfaceDescription &surface, const UsualSettings &usual);

} // namespace velm::host
