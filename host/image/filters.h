// Applies filters to pixels, for the readers of images.
#pragma once

#include "host/base/image_filter.h"

#include <span>

namespace velm::host {

// Changes a colour of three components, or a luminance, by filters in their order; see ImageFilter. `isWithinOne`:
// results above 1 become 1. [any thread]
void applyFilters(std::span<const ImageFilter> filters, bool isWithinOne, std::span<float> colour);

} // namespace velm::host
