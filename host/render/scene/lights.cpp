#include "host/render/scene/lights.h"

#include "host/base/error.h"

#include <limits>

namespace velm::host {

Light::Light(const LightDescription &description)
    : kind_(description.kind), position_(description.position),
      colour_(description.intensity * Vec3(description.colour)), shadows_(description.shadows) {
    const auto fail = [&](const char *why) {
        throw InputError(description.location, "the light \"" + description.name + "\" " + why);
    };
    if (kind_ == LightDescription::Kind::point) return;
    if (description.position == description.target) fail("is at the same position as its target");
    const Matrix toWorld = lookAlong(Vec3(description.target) - position_);
    forward_ = toWorld * Vec3{0, 0, 1};
    if (kind_ != LightDescription::Kind::area) return;
    if (!(description.width >= 0) || !(description.height >= 0)) fail("has a negative size");
    if (description.samples < 1) fail("has to have at least 1 sample");
    right_ = description.width * (toWorld * Vec3{1, 0, 0});
    up_ = description.height * (toWorld * Vec3{0, 1, 0});
    samples_ = description.samples;
}

bool Light::sample(const Vec3 &location, const UnitSquare &point, LightSample &result) const {
    if (kind_ == LightDescription::Kind::distant) {
        result = {.toLight = -forward_, .distance = std::numeric_limits<double>::infinity(), .colour = colour_};
        return true;
    }
    const bool isArea = kind_ == LightDescription::Kind::area;
    const Vec3 source = isArea ? position_ + (point.x - 0.5) * right_ + (point.y - 0.5) * up_ : position_;
    const Vec3 way = source - location;
    const double distance2 = dot(way, way);
    if (!(distance2 > 0) || !std::isfinite(distance2)) return false;
    const double distance = std::sqrt(distance2);
    const Vec3 toLight = 1 / distance * way;
    const double cosine = isArea ? -dot(forward_, toLight) : 1;
    if (!(cosine > 0)) return false;
    result = {.toLight = toLight, .distance = distance, .colour = cosine / distance2 * colour_};
    return true;
}

} // namespace velm::host
