#include "host/image/transfer.h"

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

} // namespace velm::host
