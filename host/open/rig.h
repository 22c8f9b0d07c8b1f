// Lights, ground and backdrop for files that bring none.
#pragma once

#include "host/render/geometry/bounds.h"
#include "host/scene/format/description.h"

#include <vector>

namespace velm::host {

enum class Rig {
    studio,  // three area lights, grouped around the direction in which the camera looks
    outdoor, // the sun, and light from a blue sky
    none
};

struct Lighting {
    std::vector<LightDescription> lights;
    Double3 ambientColour{1, 1, 1};
    double ambientIntensity = 0;
    BackdropDescription backdrop; // goes over into the far end of the ground
    Double3 groundColour{};
};

// The lights of a rig around the bounds, which must be finite, for pictures by that camera. All lengths follow from the
// size of the bounds. A camera that looks steeply upwards is lit from below. The studio rig gives similar pictures in
// both workflows. [any thread]
Lighting lightingOf(Rig rig, const Bounds &bounds, const CameraDescription &camera,
                    Workflow workflow = Workflow::linear);

// Whether a camera looks upwards so steeply that a ground would be in its way.
bool looksUpwards(const CameraDescription &camera);

// A wide horizontal plane just below the bounds. It has no name and no surface yet. [any thread]
ObjectDescription groundBelow(const Bounds &bounds);

} // namespace velm::host
