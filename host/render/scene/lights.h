// Lights, without shadows.
#pragma once

#include "host/render/geometry/sampling.h"
#include "host/render/geometry/transform.h"
#include "host/render/scene/panorama.h"
#include "host/scene/format/description.h"

#include <memory>
#include <utility>

namespace velm::host {

// The light that one point of a light sends to a position.
struct LightSample {
    Vec3 toLight;    // unit length
    double distance; // infinite for distant lights and domes
    Vec3 colour;     // that a facing surface receives
};

class Light {
  public:
    // `transform` is the light's world transform. Throws InputError, with the description's location, for an area or
    // linear light of negative size, and for an area, linear or dome light with fewer than 1 sample.
    Light(const LightDescription &description, const Transform &transform);
    // The same with the transform from the description: for a light without a parent, keys or a target item. Throws
    // InputError also for a light at the same position as its target, unless it is a point light or a dome.
    explicit Light(const LightDescription &description);

    bool castsShadows() const { return shadows_; }
    bool castsColouredShadows() const { return colouredShadows_; }
    // Samples to take for each lit position: more than 1 for area, linear and dome lights only.
    int sampleCount() const { return samples_; }

    // The light of the pixels of a dome's image. Until it is set, such a dome is dark. [between frames]
    void setPanorama(std::shared_ptr<const Panorama> panorama) { panorama_ = std::move(panorama); }
    const std::shared_ptr<const Panorama> &panorama() const { return panorama_; } // may be null

    // The light from one point of the light: of an area light that at (u, v) = (x, y), each 0 to 1, of a linear light
    // that at x, and of a dome the light from one direction. Other lights have one point only. `normal` is that of the
    // lit surface, so that a dome leaves out directions behind it; it may be null.
    //   point    intensity * falloff
    //   distant  intensity
    //   area     intensity * falloff, times the cosine at the light, which shines along its +Z only
    //   spot     intensity * falloff; it decreases smoothly over the edge of the cone to 0
    //   linear   intensity * falloff, times the sine of the angle to the line, as of a thin tube
    //   dome     intensity * its radiance, divided by pi and by the density of the direction
    // with the falloffs of LightDescription::Falloff. False when none of it reaches `location`. [render threads]
    bool sample(const Vec3 &location, const Vec3 *normal, const UnitSquare &point, LightSample &result) const;

  private:
    double fallenOff(double amount, double distance, double distance2) const;
    double coneFactor(const Vec3 &toLight) const;
    double directionFactor(const Vec3 &toLight) const;
    bool sampleImage(const UnitSquare &point, LightSample &result) const;
    bool sampleSky(const Vec3 *normal, const UnitSquare &point, LightSample &result) const;

    LightDescription::Kind kind_;
    LightDescription::Falloff falloff_;
    Vec3 position_;
    Vec3 axis_;               // in which the light shines; of a linear light, along which its line lies. Unit length
    Vec3 right_, up_;         // span the whole area; a line has no `up_`, and a point neither. Unit vectors for a dome
    Vec3 colour_;             // times the intensity
    double range_;            // metres
    double cone_, innerCone_; // angles from the axis at which the light ends and starts to decrease, in radians
    int samples_ = 1;
    bool shadows_, colouredShadows_;
    bool hasImage_, isHemisphere_; // of a dome
    std::shared_ptr<const Panorama> panorama_;
};

} // namespace velm::host
