// The ray functions of shading samples. They act for the sample that the calling thread is shading.
//
// Where the plug-in interface leaves the choice to the renderer, it is:
//   - Distances are those of the nearest hit that counts, even where a shading ray continues through it.
//   - Beyond the recursion limit nothing is shaded: a hit yields its distance and black, a miss what any miss yields.
//   - A shading ray that misses sets the colour to the backdrop's; with kTraceUseBackdropColour it leaves the colour
//     argument alone. A ray without a direction, or one that is not finite, misses and leaves the colour alone, and so
//     does an unknown kind of mode.
//   - Shadow and occlusion rays set all three components of the colour to the opacity along the ray, that is 1 less the
//     product of the transparencies, and return the distance to the first hit that is not fully transparent. Shadow
//     rays see the objects that cast shadows, occlusion rays those that are visible to rays.
//   - Back sides of single-sided surfaces are ignored, unless kTraceShadeBackSides is set.
//   - A sample that was reached by a ray with kRaySampled passes that flag on to the rays traced from it.
//   - Illuminate yields the direction from the light to the position, and the light's colour there with falloff and
//     shadows, and returns 1. It returns 0, with a black colour and a zero direction, where no light can arrive. With a
//     sampler, it takes one sample of an area, linear or dome light instead of all; the sampler itself is not used.
//     The direction is the mean of those of the samples.
#pragma once

#include "module/host.h"

namespace velm::host {

// Sets all ray functions of a sample, or of a hit record. [render threads]
void setRayFunctions(ShadingSample &sample);
void setRayFunctions(HostRayHit &hit);

} // namespace velm::host
