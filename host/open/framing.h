// Cameras that show all of a scene, for files that bring none.
#pragma once

#include "host/render/geometry/bounds.h"
#include "host/scene/format/description.h"

namespace velm::host {

// From where a scene is seen. In front is -Z: the camera looks along +Z there. Right is +X.
enum class View { front, back, left, right, top, bottom, threeQuarter };

// The empty border of a framed picture, as a fraction of the picture's width and height.
inline constexpr double kFrameMargin = 0.075;

// A camera without a name that sees the whole box. All eight corners are inside the margin, and two opposite ones are
// on it. `aspect` is the picture's width divided by its height. The field of view of the longer side is 40 degrees. The
// bounds must be finite, and larger than a point. [any thread]
CameraDescription framed(const Bounds &bounds, View view, double aspect);

} // namespace velm::host
