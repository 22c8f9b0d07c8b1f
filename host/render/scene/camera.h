// The camera that a picture is taken with.
#pragma once

#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"
#include "host/services/camera_view.h"

namespace velm::host {

struct CameraRay {
    Vec3 origin, direction; // unit length
    double spread;          // the footprint of a pixel grows by this width for each metre along the ray
};

// What the picture falls on, in metres. All films are as wide as that of 35 mm still cameras; as high as the picture
// asks for.
struct FilmSize {
    double width, height;
};
inline constexpr double kFilmWidth = 0.036;

inline FilmSize filmSize(int pictureWidth, int pictureHeight) {
    return {.width = kFilmWidth, .height = kFilmWidth * pictureHeight / pictureWidth};
}

// A pinhole camera with square pixels, made ready for one size of picture.
class Camera {
  public:
    // Throws InputError for a field of view that is not between 0 and 180 degrees, and for a target at the camera's own
    // position.
    Camera(const CameraDescription &description, int width, int height);

    // The ray through a place of the picture, in pixels from its upper left corner: pixel (0, 0) has its middle at
    // (0.5, 0.5).
    CameraRay ray(double x, double y) const;

    // The same ray by a place of the film, in metres from its middle to the picture's right and to its top. Beyond the
    // film's edges the view goes on. Apart from its spread, the ray does not depend on the picture's size.
    CameraRay filmRay(double x, double y) const;

    // The unit vector along which the camera looks: the film's normal.
    Vec3 forward() const { return toWorld_ * Vec3{0, 0, 1}; }

    // Where it stands and looks, as services want to know it.
    CameraView view() const;

  private:
    Matrix toWorld_;
    Vec3 position_;
    double middleX_, middleY_;
    double pixelSize_; // width of a pixel on the film plane at a distance of 1
};

} // namespace velm::host
