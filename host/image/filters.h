// Applies filters to pixels, for the readers of images.
#pragma once

#include "host/base/image_filter.h"

#include <span>

namespace velm::host {

// Applies filters, in order, to a colour of three components or to a luminance; see ImageFilter. If `isWithinOne`, the
// result of each filter is clamped to 1. Saturation and hue do not change a luminance. [any thread]
void applyFilters(std::span<const ImageFilter> filters, bool isWithinOne, std::span<float> colour);

} // namespace velm::host
