#include "host/render/scene/lights.h"

#include "host/base/angles.h"
#include "host/base/error.h"
#include "host/render/motion/pose.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace velm::host {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Two unit vectors that are perpendicular to a unit vector and to each other (Duff et al., "Building an Orthonormal
// Basis, Revisited", 2017).
struct PlaneAxes {
    Vec3 first, second;
};

PlaneAxes axesAcross(const Vec3 &unit) {
    const double sign = std::copysign(1.0, unit.z), a = -1 / (sign + unit.z), b = unit.x * unit.y * a;
    return {.first = {1 + sign * unit.x * unit.x * a, sign * b, -sign * unit.x},
            .second = {b, sign + unit.y * unit.y * a, -unit.y}};
}

// Lights that emit in all directions are not aimed at a target.
Transform ownTransform(const LightDescription &description) {
    return description.isAimed() ? transformOf(description, "light")
                                 : Transform(description, rotationMatrix(description.rotation));
}

Vec3 axisOf(const LightDescription &description, const Matrix &toWorld) {
    const bool isLinear = description.kind == LightDescription::Kind::linear;
    const Vec3 axis = toWorld * (isLinear ? Vec3{1, 0, 0} : Vec3{0, 0, 1});
    return isRigid(description) ? axis : normalised(axis);
}

} // namespace

Light::Light(const LightDescription &description, const Transform &transform)
    : kind_(description.kind), falloff_(description.falloff), position_(transform.position),
      axis_(axisOf(description, transform.toWorld)), colour_(description.intensity * Vec3(description.colour)),
      range_(std::max(0.0, description.range)), cone_(std::min(description.cone, 180.0) * kRadiansPerDegree),
      innerCone_(std::max(0.0, cone_ - description.edge * kRadiansPerDegree)), shadows_(description.shadows),
      colouredShadows_(description.colouredShadows), hasImage_(!description.image.empty()),
      isHemisphere_(description.hemisphere) {
    const auto fail = [&](const char *why) {
        throw InputError(description.location, "the light \"" + description.name + "\" " + why);
    };
    const Vec3 right = transform.toWorld * Vec3{1, 0, 0}, up = transform.toWorld * Vec3{0, 1, 0};
    switch (kind_) {
    case LightDescription::Kind::point:
    case LightDescription::Kind::distant:
    case LightDescription::Kind::spot: return;
    case LightDescription::Kind::area:
        if (!(description.width >= 0) || !(description.height >= 0)) fail("has a negative size");
        right_ = description.width * right;
        up_ = description.height * up;
        break;
    case LightDescription::Kind::linear:
        if (!(description.length >= 0)) fail("has a negative size");
        right_ = description.length * right;
        break;
    case LightDescription::Kind::dome: {
        const Matrix rotation = withoutScale(transform.toWorld);
        right_ = rotation * Vec3{1, 0, 0};
        up_ = rotation * Vec3{0, 1, 0};
        axis_ = rotation * Vec3{0, 0, 1};
        break;
    }
    }
    if (description.samples < 1) fail("has to have at least 1 sample");
    samples_ = description.samples;
}

Light::Light(const LightDescription &description) : Light(description, ownTransform(description)) {}

Vec3 Light::vectorFrom(const Vec3 &location) const {
    if (isDome()) return {};
    return kind_ == LightDescription::Kind::distant ? -axis_ : position_ - location;
}

// `amount` times the falloff at a distance, which is given together with its square.
double Light::fallenOff(double amount, double distance, double distance2) const {
    switch (falloff_) {
    case LightDescription::Falloff::none: return amount;
    case LightDescription::Falloff::linear: return amount * std::max(0.0, 1 - distance / range_);
    case LightDescription::Falloff::inverseDistance: return amount * range_ / distance;
    case LightDescription::Falloff::inverseSquare: break;
    }
    return amount * (range_ * range_) / distance2;
}

// 1 up to the soft edge of the cone, 0 outside the cone, and in between a smooth step of the angle to the axis.
double Light::coneFactor(const Vec3 &toLight) const {
    const double angle = std::acos(std::clamp(-dot(axis_, toLight), -1.0, 1.0));
    if (angle <= innerCone_) return 1;
    if (angle >= cone_) return 0;
    const double x = (cone_ - angle) / (cone_ - innerCone_);
    return x * x * (3 - 2 * x);
}

// The factor by which the emitted light depends on its direction.
double Light::directionFactor(const Vec3 &toLight) const {
    switch (kind_) {
    case LightDescription::Kind::area: return -dot(axis_, toLight);
    case LightDescription::Kind::linear: return length(cross(axis_, toLight));
    case LightDescription::Kind::spot: return coneFactor(toLight);
    case LightDescription::Kind::point:
    case LightDescription::Kind::distant:
    case LightDescription::Kind::dome: break;
    }
    return 1;
}

bool Light::sampleImage(const UnitSquare &point, LightSample &result) const {
    Panorama::Sample sample;
    if (!panorama_ || !panorama_->sample(point, sample)) return false;
    const Vec3 &way = sample.direction;
    result = {.toLight = way.x * right_ + way.y * up_ + way.z * axis_,
              .distance = kInfinity,
              .colour = sample.colour * colour_};
    return true;
}

// Samples a direction with uniform density: of the hemisphere about `normal`, or if it is null, of the dome's
// hemisphere or of the whole sphere.
bool Light::sampleSky(const Vec3 *normal, const UnitSquare &point, LightSample &result) const {
    const Vec3 &pole = normal ? *normal : up_;
    const bool isHalf = normal || isHemisphere_;
    const double height = isHalf ? 1 - point.x : 1 - 2 * point.x;
    const double radius = std::sqrt(std::max(0.0, 1 - height * height)), angle = 2 * std::numbers::pi * point.y;
    const PlaneAxes across = axesAcross(pole);
    const Vec3 toLight =
        radius * std::cos(angle) * across.first + radius * std::sin(angle) * across.second + height * pole;
    if (isHemisphere_ && !(dot(toLight, up_) > 0)) return false;
    // The inverse of the density, 2 pi or 4 pi, divided by the pi of a diffuse reflection.
    const double factor = isHalf ? 2 : 4;
    result = {.toLight = toLight, .distance = kInfinity, .colour = factor * colour_};
    return true;
}

bool Light::sample(const Vec3 &location, const Vec3 *normal, const UnitSquare &point, LightSample &result) const {
    if (kind_ == LightDescription::Kind::dome)
        return hasImage_ ? sampleImage(point, result) : sampleSky(normal, point, result);
    if (kind_ == LightDescription::Kind::distant) {
        result = {.toLight = -axis_, .distance = kInfinity, .colour = colour_};
        return true;
    }
    const Vec3 source = position_ + (point.x - 0.5) * right_ + (point.y - 0.5) * up_;
    const Vec3 way = source - location;
    const double distance2 = dot(way, way);
    if (!(distance2 > 0) || !std::isfinite(distance2)) return false;
    const double distance = std::sqrt(distance2);
    const Vec3 toLight = 1 / distance * way;
    const double factor = fallenOff(directionFactor(toLight), distance, distance2);
    if (!(factor > 0)) return false;
    result = {.toLight = toLight, .distance = distance, .colour = factor * colour_};
    return true;
}

} // namespace velm::host
