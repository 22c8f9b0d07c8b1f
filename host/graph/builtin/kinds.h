// What each kind of parameter is in the plug-in interface: one row for each kind.
#pragma once

#include "host/graph/builtin/frame.h"

namespace velm::host::builtin {

struct KindFacts {
    int parmType;        // 0: not animated
    int inputType;       // 0: no input
    const char *control; // type of its control on a panel
    const char *value;   // type of its value in a panel's description
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
