// Light that arrives at a point.
#pragma once

#include "host/render/tracing/trace.h"

namespace velm::host {

// Calls `add` with each sample of a light that could reach `position`: the unit direction to the light, and the colour
// with falloff and shadow, weighted so that the colours add up to the light as a whole. Takes `wanted` samples of the
// light. Samples on the far side of `normal` are left out, unless `normal` is null. `position` is the sample's that
// `state.origin` stands for. [render threads]
template <typename Add>
void gatherLight(RayState &state, const Light &light, const Vec3 &position, const Vec3 *normal, int wanted, Add add) {
    const std::uint32_t set = combine(state.seed, state.drawnSets++);
    const ShadowFilter filter = light.castsColouredShadows() ? ShadowFilter::colour : ShadowFilter::grey;
    for (int i = 0; i < wanted; ++i) {
        LightSample sample;
        if (!light.sample(position, normal, stratifiedPoint(static_cast<std::uint32_t>(i), set), sample)) continue;
        if (normal && !(dot(*normal, sample.toLight) > 0)) continue;
        Vec3 through{1, 1, 1};
        if (light.castsShadows())
            through = transmittance(state, state.shadowScene, position, sample.toLight, sample.distance, filter);
        add(sample.toLight, (1.0 / wanted) * through * sample.colour);
    }
}

} // namespace velm::host
