// What each kind of parameter is to the host: one row a kind.
#pragma once

#include "host/graph/builtin/frame.h"

namespace velm::host::builtin {

struct KindFacts {
    int parmType;        // 0: not animated
    int inputType;       // 0: no input
    const char *control; // and the type of its value on a panel
    const char *value;
};

constexpr KindFacts factsOf(Kind kind) {
    switch (kind) {
    case Kind::scalar: return {kParmFloat, kConnectScalar, "float-env", "float-env"};
    case Kind::percent: return {kParmPercent, kConnectScalar, "percent-env", "percent-env"};
    case Kind::distance: return {kParmDistance, kConnectScalar, "distance-env", "distance-env"};
    case Kind::angle: return {kParmAngle, kConnectScalar, "angle-env", "angle-env"};
    case Kind::colour: return {kParmColour, kConnectColour, "color-env", "color-env"};
    case Kind::vector: return {kParmFloatTriple, kConnectVector, "float3-env", "float3-env"};
    case Kind::integer: return {0, kConnectInteger, "integer", "integer"};
    case Kind::choice: return {0, kConnectInteger, "iPopChoice", "integer"};
    case Kind::image: return {0, 0, "iPopChoice", "integer"};
    case Kind::text: return {0, 0, "string", "string"};
    }
    return {};
}

} // namespace velm::host::builtin
