// The functions that a shading sample carries. They act for the sample that the calling thread is shading.
//
// What is the renderer's own choice in them:
//   - Distances are those of the nearest hit that counts, also where a shading ray goes on through it.
//   - Beyond the recursion limit nothing is shaded: a hit gives its distance and black, a miss what a miss gives.
//   - A miss of a shading ray leaves the backdrop's colour, or the colour argument with kTraceUseBackdropColour. A ray
//     without a direction, or one that is not finite, is a miss that leaves the colour alone. So is a mode whose kind
//     is none.
//   - Shadow and occlusion rays leave their opacity, 1 less the product of the transparencies on the way, in all three
//     components, and return the distance to the first thing that is not fully transparent. Shadow rays heed objects
//     that cast shadows, occlusion rays those that rays can see.
//   - The backs of surfaces that are not double-sided are passed by, unless kTraceShadeBackSides is given.
//   - Samples reached by a sampled ray hand the sampled bit on to what is traced from them.
//   - Illuminate gives the direction from the light to the position, and the light's colour there with falloff and
//     shadows, and returns 1; 0, black and no direction where nothing of the light could arrive. With a sampler it asks
//     an area light for one point instead of all; the sampler itself is not looked into.
#pragma once

#include "module/host.h"

namespace velm::host {

// Sets the six functions of a sample, and those of a hit record. [render threads]
void setRayFunctions(ShadingSample &sample);
void setRayFunctions(HostRayHit &hit);

} // namespace velm::host
