// Lights: what of them reaches a place, before anything that stands in the way.
#pragma once

#include "host/render/geometry/item.h"
#include "host/render/geometry/sampling.h"
#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"

namespace velm::host {

// Light on its way to a place from one point of a light.
struct LightSample {
    Vec3 toLight;    // unit length
    double distance; // infinite for distant lights
    Vec3 colour;     // what a facing surface receives; 1 is full
};

class Light {
  public:
    // Throws InputError for a negative size of an area light, fewer than 1 of its samples, and a distant or area light
    // that stands on its own target.
    Light(const LightDescription &description, int index);

    HostItem item; // kItemLight
    bool castsShadows() const { return shadows_; }
    // Points to be asked for: more than 1 for area lights only.
    int sampleCount() const { return samples_; }

    // The light from the point (u, v) of its area, each 0 to 1; only area lights have more points than one.
    //   point    intensity / distance^2
    //   distant  intensity
    //   area     intensity / distance^2 times the cosine at the light, which shines to its target's side only
    // False when nothing of it reaches the place.
    bool sample(const Vec3 &place, const UnitSquare &point, LightSample &result) const;

  private:
    LightDescription::Kind kind_;
    Vec3 position_, forward_, right_, up_; // right and up reach across the whole area
    Vec3 colour_;                          // times the intensity
    int samples_ = 1;
    bool shadows_;
};

} // namespace velm::host
