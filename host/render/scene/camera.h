// The camera that a picture is taken with.
#pragma once

#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"
#include "host/services/camera_view.h"

namespace velm::host {

struct CameraRay {
    Vec3 origin, direction; // unit length
    double spread;          // growth of a pixel's footprint per metre along the ray
};

// The size of a film, in metres.
struct FilmSize {
    double width, height;
};

// The width is the camera's own; the height follows from the shape of the picture.
inline FilmSize filmSize(const CameraDescription &camera, int pictureWidth, int pictureHeight, double pixelAspect) {
    return {.width = camera.filmWidth, .height = camera.filmWidth * pictureHeight / (pictureWidth * pixelAspect)};
}

// A pinhole camera, prepared for pictures of one size and shape of pixels.
class Camera {
  public:
    // `transform` is the camera's world transform, of which the scale is ignored; `pixelAspect` is the width of a pixel
    // divided by its height. Throws InputError for a field of view that is not between 0 and 180 degrees.
    Camera(const CameraDescription &description, const Transform &transform, int width, int height,
           double pixelAspect = 1);
    // The same with the transform from transformOf: for a camera without a parent, keys or a target item. Throws
    // InputError also for a target at the camera's own position.
    Camera(const CameraDescription &description, int width, int height, double pixelAspect = 1);

    // The ray through a point of the picture, in pixels from its upper left corner: the middle of pixel (0, 0) is at
    // (0.5, 0.5).
    CameraRay ray(double x, double y) const;

    // The ray through a point of the film, in metres from its middle to the picture's right and to its top; also beyond
    // the film's edges. Except for its spread, the ray does not depend on the picture's size.
    CameraRay filmRay(double x, double y) const;

    // The unit vector in which the camera looks: the film's normal.
    Vec3 forward() const { return toWorld_ * Vec3{0, 0, 1}; }

    // The position and direction, as the services describe them.
    CameraView view() const;

  private:
    Matrix toWorld_;
    Vec3 position_;
    double middleX_, middleY_;
    double filmWidth_;                // metres
    double pixelWidth_, pixelHeight_; // of a pixel on the film plane at a distance of 1
    double footprint_;                // the side of a square of the same area
};

} // namespace velm::host
