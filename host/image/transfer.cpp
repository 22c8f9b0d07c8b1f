#include "host/image/transfer.h"

#include <algorithm>
#include <cmath>

namespace velm::host {

double srgbToLinear(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

double linearToSrgb(double linear) {
    if (!(linear > 0)) return 0;
    if (linear >= 1) return 1;
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

double filmicCurve(double light) {
    if (!(light > 0)) return 0;
    if (light > 1e6) return 1; // the curve reaches 1 far below, and infinity would give NaN
    return std::min(1.0, light * (2.51 * light + 0.03) / (light * (2.43 * light + 0.59) + 0.14));
}

} // namespace velm::host
