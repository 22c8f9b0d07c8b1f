#include "host/render/scene/fog.h"

#include <algorithm>

namespace velm::host {

double Fog::amount(double distance) const {
    const auto &[kind, colour, backdropColour, nearest, farthest, least, most] = description_;
    const double left = 1 - std::clamp((distance - nearest) / (farthest - nearest), 0.0, 1.0);
    double shown = left; // of what the fog still has to cover
    if (kind == FogDescription::Kind::quadratic) shown = left * left;
    if (kind == FogDescription::Kind::cubic) shown = left * left * left;
    return most + (least - most) * shown;
}

double Fog::transmittance(double from, double to) const {
    const double before = from > 0 ? 1 - amount(from) : 1; // all of it begins at the camera
    return before > 0 ? std::clamp((1 - amount(to)) / before, 0.0, 1.0) : 0;
}

} // namespace velm::host
