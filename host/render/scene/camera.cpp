#include "host/render/scene/camera.h"

#include "host/base/angles.h"
#include "host/base/error.h"
#include "host/render/motion/pose.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host {
namespace {

constexpr double kNearestFocus = 1e-6; // metres; keys may give less between them

} // namespace

Camera::Camera(const CameraDescription &description, const Transform &transform, int width, int height,
               double pixelAspect)
    : toWorld_(isRigid(description) ? transform.toWorld : withoutScale(transform.toWorld)),
      position_(transform.position), middleX_(width / 2.0), middleY_(height / 2.0), filmWidth_(description.filmWidth),
      focusDistance_(std::max(description.focusDistance, kNearestFocus)), blades_(description.blades),
      bladeRotation_(description.bladeRotation * kRadiansPerDegree) {
    if (!(description.fieldOfView > 0 && description.fieldOfView < 180)) {
        throw InputError(description.location, "the field of view of the camera \"" + description.name +
                                                   "\" has to be between 0 and 180 degrees");
    }
    const double halfView = std::tan(description.fieldOfView * std::numbers::pi / 360);
    pixelWidth_ = 2 * halfView / width;
    pixelHeight_ = pixelWidth_ / pixelAspect;
    footprint_ = pixelWidth_ / std::sqrt(pixelAspect);
    const double focalLength = filmWidth_ / (2 * halfView);
    if (description.aperture > 0) lensRadius_ = focalLength / description.aperture / 2;
}

Camera::Camera(const CameraDescription &description, int width, int height, double pixelAspect)
    : Camera(description, transformOf(description, "camera"), width, height, pixelAspect) {}

CameraRay Camera::ray(double x, double y) const {
    const Vec3 film{(x - middleX_) * pixelWidth_, (middleY_ - y) * pixelHeight_, 1};
    const Vec3 direction = normalised(film);
    // At distance d along the ray, the film plane through that point is `direction.z` times d away.
    return {.origin = position_, .direction = toWorld_ * direction, .spread = footprint_ * direction.z};
}

// All rays from one point of the film meet in one point of the plane in focus.
CameraRay Camera::ray(double x, double y, const DiscPoint &lens) const {
    const Vec3 start = lensRadius_ * Vec3{lens.x, lens.y, 0};
    const Vec3 film{(x - middleX_) * pixelWidth_, (middleY_ - y) * pixelHeight_, 1};
    const Vec3 direction = normalised(focusDistance_ * film - start);
    return {
        .origin = position_ + toWorld_ * start, .direction = toWorld_ * direction, .spread = footprint_ * direction.z};
}

DiscPoint Camera::lensPoint(const UnitSquare &point) const {
    return blades_ == 0 ? onDisc(point) : onPolygon(point, blades_, bladeRotation_);
}

CameraRay Camera::filmRay(double x, double y, const DiscPoint &lens) const {
    const double pixelsPerMetre = 2 * middleX_ / filmWidth_;
    const double pixelX = middleX_ + x * pixelsPerMetre;
    const double pixelY = middleY_ - y * pixelsPerMetre * (pixelWidth_ / pixelHeight_);
    return hasLens() ? ray(pixelX, pixelY, lens) : ray(pixelX, pixelY);
}

MovingCamera::MovingCamera(const std::vector<CameraStep> &steps, int width, int height, double pixelAspect) {
    for (const CameraStep &step : steps)
        steps_.emplace_back(step.description, step.transform, width, height, pixelAspect);
}

MovingCamera::Moment MovingCamera::momentAt(double time) const {
    const double position = std::clamp(time, 0.0, 1.0) * static_cast<double>(steps_.size() - 1);
    const std::size_t step = std::min(static_cast<std::size_t>(position), steps_.size() - 2);
    return {.step = step, .fraction = position - static_cast<double>(step)};
}

CameraRay MovingCamera::between(const CameraRay &from, const CameraRay &to, double fraction) {
    return {.origin = from.origin + fraction * (to.origin - from.origin),
            .direction = normalised(from.direction + fraction * (to.direction - from.direction), from.direction),
            .spread = from.spread + fraction * (to.spread - from.spread)};
}

Vec3 MovingCamera::forward(double time) const {
    return ray(time,
               [](const Camera &camera) { return CameraRay{.origin = {}, .direction = camera.forward(), .spread = 0}; })
        .direction;
}

CameraView Camera::view() const {
    CameraView view;
    position_.store(view.position);
    // The view's rows are the camera's axes, which are the columns of our matrix.
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) view.matrix[3 * row + column] = toWorld_.m[3 * column + row];
    view.tanHalfWidth = middleX_ * pixelWidth_;
    view.tanHalfHeight = middleY_ * pixelHeight_;
    return view;
}

} // namespace velm::host
