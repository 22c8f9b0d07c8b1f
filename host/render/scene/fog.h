// Fog between the camera and what it sees.
#pragma once

#include "host/scene/format/description.h"

namespace velm::host {

class Fog {
  public:
    Fog() = default; // none
    explicit Fog(const FogDescription &description) : description_(description) {}

    // Whether there is any; otherwise nothing else is asked for.
    bool exists() const { return description_.kind != FogDescription::Kind::none; }

    // The fraction of the colour of a point that gets through the fog along a ray. The distances are those of the
    // ray's two ends from the camera, in metres along the path of the light. Over the segments of a path, the
    // fractions multiply to that of the path as a whole. [render threads]
    double transmittance(double from, double to) const;

    // With the colour of the backdrop, `colour` means nothing.
    bool hasBackdropColour() const { return description_.backdropColour; }
    const Double3 &colour() const { return description_.colour; }

  private:
    double amount(double distance) const;

    FogDescription description_;
};

} // namespace velm::host
