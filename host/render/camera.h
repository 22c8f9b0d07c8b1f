// The camera that a picture is taken with.
#pragma once

#include "host/render/transform.h"
#include "host/scene/description.h"
#include "host/services/camera_view.h"

namespace velm {

struct CameraRay {
    Vec3 origin, direction; // unit length
    double spread;          // the footprint of a pixel grows by this width for each metre along the ray
};

// A pinhole camera with square pixels, made ready for one size of picture.
class Camera {
  public:
    // Throws InputError for a field of view that is not between 0 and 180 degrees, and for a target at the camera's own
    // position.
    Camera(const CameraDescription &description, int width, int height);

    // The ray through a place of the picture, in pixels from its upper left corner: pixel (0, 0) has its middle at
    // (0.5, 0.5).
    CameraRay ray(double x, double y) const;

    // The same, as services want to know it.
    CameraView view() const;

  private:
    Matrix toWorld_;
    Vec3 position_;
    double middleX_, middleY_;
    double pixelSize_; // width of a pixel on the film plane at a distance of 1
};

} // namespace velm
