// The definitions of the host's own nodes, by source file.
#pragma once

#include "host/graph/builtin/frame.h"

namespace velm::host::builtin {

// constants.cpp
extern const Definition constantColour, constantScalar, constantVector, constantInteger;
// spot_info.cpp
extern const Definition spotInfo;
// item_info.cpp, incidence.cpp
extern const Definition timeInfoNode, itemInfoNode, cameraDistance, incidence, fresnel;
// arithmetic.cpp
extern const Definition addScalar, multiplyScalar, mixScalar, clampScalar;
extern const Definition addColour, multiplyColour, mixColour, clampColour;
// scalar_math.cpp, vector_math.cpp
extern const Definition scalarMath, vectorMath;
// components.cpp
extern const Definition makeVector, splitVector, makeColour, splitColour;
// checker.cpp, fractal_noise.cpp, image.cpp, curve.cpp
extern const Definition checker, fractalNoise, image, curve;
// image_projection.cpp, colour_ramp.cpp, blend_layers.cpp
extern const Definition imageProjection, colourRamp, blendColour, blendScalar;
// vertex_maps.cpp
extern const Definition vertexColour, weightMap;
// bump.cpp, procedural_pattern.cpp
extern const Definition bump, proceduralPattern;
// solid_textures.cpp, brick.cpp
extern const Definition turbulence, marble, wood, cells, brick;

// The colours of the nodes' titles, by menu group.
constexpr std::array<int, 3> kConstantColour{90, 110, 90};
constexpr std::array<int, 3> kInfoColour{70, 100, 130};
constexpr std::array<int, 3> kMathColour{120, 100, 60};
constexpr std::array<int, 3> kTextureColour{60, 110, 130};

} // namespace velm::host::builtin
