#include "host/render/scene/lights.h"

#include "host/base/angles.h"
#include "host/base/error.h"
#include "host/render/motion/pose.h"

#include <algorithm>
#include <limits>

namespace velm::host {
namespace {

// A point light has no direction, and so no target.
Transform ownTransform(const LightDescription &description) {
    return description.kind == LightDescription::Kind::point ? Transform(description)
                                                             : transformOf(description, "light");
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
      innerCone_(std::max(0.0, cone_ - description.edge * kRadiansPerDegree)), shadows_(description.shadows) {
    const auto fail = [&](const char *why) {
        throw InputError(description.location, "the light \"" + description.name + "\" " + why);
    };
    const bool isArea = kind_ == LightDescription::Kind::area;
    if (!isArea && kind_ != LightDescription::Kind::linear) return;
    const double width = isArea ? description.width : description.length, height = isArea ? description.height : 0;
    if (!(width >= 0) || !(height >= 0)) fail("has a negative size");
    if (description.samples < 1) fail("has to have at least 1 sample");
    right_ = width * (transform.toWorld * Vec3{1, 0, 0});
    up_ = height * (transform.toWorld * Vec3{0, 1, 0});
    samples_ = description.samples;
}

Light::Light(const LightDescription &description) : Light(description, ownTransform(description)) {}

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

// The factor by which the light depends on the direction in which it leaves.
double Light::directionFactor(const Vec3 &toLight) const {
    switch (kind_) {
    case LightDescription::Kind::area: return -dot(axis_, toLight);
    case LightDescription::Kind::linear: return length(cross(axis_, toLight));
    case LightDescription::Kind::spot: return coneFactor(toLight);
    case LightDescription::Kind::point:
    case LightDescription::Kind::distant: break;
    }
    return 1;
}

bool Light::sample(const Vec3 &location, const UnitSquare &point, LightSample &result) const {
    if (kind_ == LightDescription::Kind::distant) {
        result = {.toLight = -axis_, .distance = std::numeric_limits<double>::infinity(), .colour = colour_};
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
