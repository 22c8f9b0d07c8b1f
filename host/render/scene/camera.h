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

// The size of the film, in metres. Films are as wide as those of 35 mm still cameras; their height follows from the
// picture's aspect.
struct FilmSize {
    double width, height;
};
inline constexpr double kFilmWidth = 0.036;

inline FilmSize filmSize(int pictureWidth, int pictureHeight) {
    return {.width = kFilmWidth, .height = kFilmWidth * pictureHeight / pictureWidth};
}

// A pinhole camera with square pixels, prepared for pictures of one size.
class Camera {
  public:
    // `transform` is the camera's world transform, of which the scale is ignored. Throws InputError for a field of view
    // that is not between 0 and 180 degrees.
    Camera(const CameraDescription &description, const Transform &transform, int width, int height);
    // The same with the transform from transformOf: for a camera without a parent, keys or a target item. Throws
    // InputError also for a target at the camera's own position.
    Camera(const CameraDescription &description, int width, int height);

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
    double pixelSize_; // width of a pixel on the film plane at a distance of 1
};

} // namespace velm::host
