// The values that a surface of an object file has besides its network.
#pragma once

#include "host/object/envelopes.h"

#include <array>
#include <map>
#include <optional>
#include <string>

namespace velm::host {

// A map of vertex colours that tints a surface.
struct VertexTint {
    float intensity = 1; // 1 tints the colour fully. Its envelope is that of "VCOL"
    std::string map;     // its name
};

// A surface's own values, which it has besides its network, each from a sub-chunk. Nothing where the sub-chunk is
// missing. Fractions are 1 for full, the angle is in radians.
struct SurfaceChunkValues {
    std::optional<std::array<float, 3>> colour;                                 // COLR
    std::optional<float> luminosity, diffuse, specular, glossiness, reflection; // LUMI DIFF SPEC GLOS REFL
    std::optional<float> transparency, refractionIndex;                         // TRAN RIND
    std::optional<float> bump;                                                  // BUMP: the strength
    std::optional<float> smoothingAngle;                                        // SMAN
    std::optional<int> sides;                                                   // SIDE: 1 or 3
    std::optional<VertexTint> tint;                                             // VCOL that names a map
    // The envelopes that drive values, by sub-chunk: "COLR". A value without one is not in the map.
    std::map<std::string, ComponentEnvelopes> envelopes;

    // The envelopes of a sub-chunk's value; empty if it is not animated.
    ComponentEnvelopes envelopesOf(const std::string &chunk) const {
        const auto found = envelopes.find(chunk);
        return found == envelopes.end() ? ComponentEnvelopes{} : found->second;
    }
};

} // namespace velm::host
