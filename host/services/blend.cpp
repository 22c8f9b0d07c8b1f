#include "host/services/blend.h"

#include "module/host.h"

#include <algorithm>
#include <cmath>

namespace velm::host {

namespace {

double dodge(double top, double bottom) {
    if (top < 1) return bottom / (1 - top);
    return bottom > 0 ? std::max(1.0, bottom) : 0;
}

double burn(double top, double bottom) {
    if (top > 0) return 1 - (1 - bottom) / top;
    return bottom < 1 ? 0 : 1;
}

double blended(double top, double bottom, int component, int mode) {
    switch (mode) {
    case kBlendAdditive: return bottom + top;
    case kBlendSubtractive: return bottom - top;
    case kBlendMultiply: return bottom * top;
    case kBlendScreen: return 1 - (1 - bottom) * (1 - top);
    case kBlendDarken: return std::min(bottom, top);
    case kBlendLighten: return std::max(bottom, top);
    case kBlendDifference: return std::fabs(bottom - top);
    case kBlendNegative: return 1 - std::fabs(1 - bottom - top);
    case kBlendColourDodge: return dodge(top, bottom);
    case kBlendColourBurn: return burn(top, bottom);
    case kBlendRed: return component == 0 ? top : bottom;
    case kBlendGreen: return component == 1 ? top : bottom;
    case kBlendBlue: return component == 2 ? top : bottom;
    default: return top;
    }
}

} // namespace

void blend(double result[3], const double top[3], const double bottom[3], double opacity, int mode) {
    for (int i = 0; i < 3; ++i) {
        const double below = bottom[i];
        result[i] = below + opacity * (blended(top[i], below, i, mode) - below);
    }
}

} // namespace velm::host
