#include "host/render/scene/camera.h"

#include "host/base/error.h"
#include "host/render/motion/pose.h"

#include <numbers>

namespace velm::host {

Camera::Camera(const CameraDescription &description, const Transform &transform, int width, int height,
               double pixelAspect)
    : toWorld_(isRigid(description) ? transform.toWorld : withoutScale(transform.toWorld)),
      position_(transform.position), middleX_(width / 2.0), middleY_(height / 2.0), filmWidth_(description.filmWidth) {
    if (!(description.fieldOfView > 0 && description.fieldOfView < 180)) {
        throw InputError(description.location, "the field of view of the camera \"" + description.name +
                                                   "\" has to be between 0 and 180 degrees");
    }
    pixelWidth_ = 2 * std::tan(description.fieldOfView * std::numbers::pi / 360) / width;
    pixelHeight_ = pixelWidth_ / pixelAspect;
    footprint_ = pixelWidth_ / std::sqrt(pixelAspect);
}

Camera::Camera(const CameraDescription &description, int width, int height, double pixelAspect)
    : Camera(description, transformOf(description, "camera"), width, height, pixelAspect) {}

CameraRay Camera::ray(double x, double y) const {
    const Vec3 film{(x - middleX_) * pixelWidth_, (middleY_ - y) * pixelHeight_, 1};
    const Vec3 direction = normalised(film);
    // At distance d along the ray, the film plane through that point is `direction.z` times d away.
    return {.origin = position_, .direction = toWorld_ * direction, .spread = footprint_ * direction.z};
}

CameraRay Camera::filmRay(double x, double y) const {
    const double pixelsPerMetre = 2 * middleX_ / filmWidth_;
    return ray(middleX_ + x * pixelsPerMetre, middleY_ - y * pixelsPerMetre * (pixelWidth_ / pixelHeight_));
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
