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

    bool isDome() const { return kind_ == LightDescription::Kind::dome; }
    // The vector from a location to the light: to its middle, or, for a distant light, of length 1 and against the
    // direction in which it shines. Zero for a dome. [render threads]
    Vec3 vectorFrom(const Vec3 &location) const;

    bool castsShadows() const { return shadows_; }
    bool castsColouredShadows() const { return colouredShadows_; }
    // Samples to take for each lit position: more than 1 for area, linear and dome lights only.
    int sampleCount() const { return samples_; }

    // Sets the distribution of the light of a dome's image. Until then, such a dome is dark. [between frames]
    void setPanorama(std::shared_ptr<const Panorama> panorama) { panorama_ = std::move(panorama); }
    const std::shared_ptr<const Panorama> &panorama() const { return panorama_; } // may be null

    // Takes one sample of the light that arrives at `location`. `point` chooses a point of an area light (x across its
    // width, y across its height), a point of a linear light (x along the line), or a direction of a dome; other lights
    // ignore it. `normal` is the normal of the lit surface, or null: with it, an even dome only samples directions in
    // front of the surface. The colour of the sample is that of the light, times its intensity, times:
    //   point    the falloff
    //   distant  1
    //   area     the falloff and the cosine of the angle to the light's +Z; it does not emit backwards
    //   spot     the falloff and a factor that decreases smoothly to 0 over the edge of the cone
    //   linear   the falloff and the sine of the angle to the line, like a thin tube
    //   dome     the radiance, divided by pi and by the probability density of the direction
    // See LightDescription::Falloff for the falloffs. False if no light arrives. [render threads]
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
    Vec3 axis_;       // the direction of emission, or the direction of a linear light's line; unit length
    Vec3 right_, up_; // the edges of an area light; a linear light has only `right_`. Unit vectors for a dome
    Vec3 colour_;     // times the intensity
    double range_;    // metres
    double cone_,
        innerCone_; // radians from the axis: the light is 0 outside of the first, and constant inside of the second
    int samples_ = 1;
    bool shadows_, colouredShadows_;
    bool hasImage_, isHemisphere_; // of a dome
    std::shared_ptr<const Panorama> panorama_;
};

} // namespace velm::host
