// Light that arrives at a place.
#pragma once

#include "host/render/tracing/trace.h"

namespace velm::host {

// Gives every sample of a light that could reach `place` to `add`, as (unit direction to the light, colour with falloff
// and shadow); the colours add up to the light as a whole. Where `normal` is not null, samples behind it are left out.
// `wanted` points are asked for. The state's caster is at the place.
template <typename Add>
void gatherLight(RayState &state, const Light &light, const Vec3 &place, const Vec3 *normal, int wanted, Add add) {
    const std::uint32_t set = combine(state.seed, state.drawnSets++);
    for (int i = 0; i < wanted; ++i) {
        LightSample sample;
        if (!light.sample(place, stratifiedPoint(static_cast<std::uint32_t>(i), set), sample)) continue;
        if (normal != nullptr && !(dot(*normal, sample.toLight) > 0)) continue;
        double share = 1.0 / wanted;
        if (light.castsShadows()) {
            share *= transmitted(state, state.shadowScene, place, sample.toLight, sample.distance, {}, nullptr);
        }
        add(sample.toLight, share * sample.colour);
    }
}

} // namespace velm::host
