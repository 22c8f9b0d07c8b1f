// Lights, without shadows.
#pragma once

#include "host/render/geometry/sampling.h"
#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"

namespace velm::host {

// The light that one point of a light sends to a position.
struct LightSample {
    Vec3 toLight;    // unit length
    double distance; // infinite for distant lights
    Vec3 colour;     // that a facing surface receives
};

class Light {
  public:
    // Throws InputError, with the description's location, for an area light of negative size or with fewer than 1
    // sample, and for a distant or area light at the same position as its target.
    explicit Light(const LightDescription &description);

    bool castsShadows() const { return shadows_; }
    // Samples to take for each lit position: more than 1 for area lights only.
    int sampleCount() const { return samples_; }

    // The light from the point (u, v) of the light's area, each 0 to 1. Point and distant lights have one point only.
    //   point    intensity / distance^2
    //   distant  intensity
    //   area     intensity / distance^2 times the cosine at the light, which shines to its target's side only
    // False when none of it reaches `location`. [render threads]
    bool sample(const Vec3 &location, const UnitSquare &point, LightSample &result) const;

  private:
    LightDescription::Kind kind_;
    Vec3 position_, forward_, right_, up_; // right and up span the whole area
    Vec3 colour_;                          // times the intensity
    int samples_ = 1;
    bool shadows_;
};

} // namespace velm::host
