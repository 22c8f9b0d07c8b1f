// The sample that is being shaded. Positions are in metres; positions and directions are in world space unless the
// output's name says otherwise. "Ray Direction" points from the ray's source to the sample. "U" and "V" are on the map
// that "UV Map" names, or on the mesh's first map when that is empty; 0 where there is no such map.
#include "host/graph/builtin/definitions.h"

#include <cmath>

namespace velm::host::builtin {

namespace {

enum {
    kPosition,
    kObjectPosition,
    kNormal,
    kGeometricNormal,
    kRayDirection,
    kRaySource,
    kDistance,
    kSpotSize,
    kIncidence,
    kIndex,
    kU,
    kV,
    kPolygon,
    kDepth,
    kBackSide
};

std::array<double, 3> rayDirection(const ShadingSample &sample) {
    std::array<double, 3> direction{};
    for (std::size_t i = 0; i < 3; ++i) direction[i] = sample.position[i] - sample.raySource[i];
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    if (length > 0)
        for (double &component : direction) component /= length;
    return direction;
}

double mapCoordinate(const Evaluation &evaluation, bool second) {
    double u = 0, v = 0;
    evaluation.uv(u, v);
    return second ? v : u;
}

void give(const Evaluation &evaluation, int output) {
    const ShadingSample &sample = evaluation.sample();
    switch (output) {
    case kPosition: return evaluation.set(sample.position);
    case kObjectPosition: return evaluation.set(sample.objectPosition);
    case kNormal: return evaluation.set(sample.shadingNormal);
    case kGeometricNormal: return evaluation.set(sample.geometricNormal);
    case kRayDirection: return evaluation.set(rayDirection(sample));
    case kRaySource: return evaluation.set(sample.raySource);
    case kDistance: return evaluation.set(sample.rayLength);
    case kSpotSize: return evaluation.set(sample.spotSize);
    case kIncidence: return evaluation.set(sample.cosine);
    case kIndex: return evaluation.set(sample.refractionIndex);
    case kU: return evaluation.set(mapCoordinate(evaluation, false));
    case kV: return evaluation.set(mapCoordinate(evaluation, true));
    case kPolygon: return evaluation.set(sample.polygonNumber);
    case kDepth: return evaluation.set(sample.rayDepth);
    case kBackSide: return evaluation.set((sample.rayFlags & kRayBackSide) != 0 ? 1 : 0);
    default: return;
    }
}

} // namespace

constinit const Definition spotInfo{
    .name = "Spot Info",
    .colour = kInfoColour,
    .parameters = {{{.label = "UV Map", .kind = Kind::text}}},
    .outputs = {{{"Position", kConnectVector},
                 {"Object Position", kConnectVector},
                 {"Normal", kConnectVector},
                 {"Geometric Normal", kConnectVector},
                 {"Ray Direction", kConnectVector},
                 {"Ray Source", kConnectVector},
                 {"Distance", kConnectScalar},
                 {"Spot Size", kConnectScalar},
                 {"Incidence", kConnectScalar},
                 {"Refraction Index", kConnectScalar},
                 {"U", kConnectScalar},
                 {"V", kConnectScalar},
                 {"Polygon", kConnectInteger},
                 {"Depth", kConnectInteger},
                 {"Back Side", kConnectInteger}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
