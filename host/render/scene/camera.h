// The camera that a picture is taken with.
#pragma once

#include "host/render/geometry/sampling.h"
#include "host/render/geometry/transform.h"
#include "host/scene/format/description.h"
#include "host/services/camera_view.h"

#include <vector>

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

// A camera with a pinhole or a thin lens, prepared for pictures of one size and shape of pixels.
//
// The focal length is F = film width / (2 tan(field of view / 2)), the lens's diameter F / f-number. As in LightWave,
// the field of view does not depend on the focus: the film is at the distance F behind the lens, not at F d / (d - F).
// So a point at the depth z becomes a disc on the film, of the diameter
//
//   lens diameter * F * |z - d| / (z d)
//
// where d is the focus distance. Depths and the focus distance are measured along the camera's axis.
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

    // The same through a point of the lens, which has the radius 1 here, with x to the picture's right and y to its
    // top.
    CameraRay ray(double x, double y, const DiscPoint &lens) const;

    // Whether rays through different points of the lens differ.
    bool hasLens() const { return lensRadius_ > 0; }
    // Maps the square to the shape of the lens, with equal areas.
    DiscPoint lensPoint(const UnitSquare &point) const;

    // The ray through a point of the film, in metres from its middle to the picture's right and to its top; also beyond
    // the film's edges. Except for its spread, the ray does not depend on the picture's size.
    CameraRay filmRay(double x, double y, const DiscPoint &lens = {0, 0}) const;

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
    double lensRadius_ = 0;           // metres
    double focusDistance_;            // metres, above 0
    int blades_;
    double bladeRotation_; // radians
};

// A camera at one time.
struct CameraStep {
    CameraDescription description;
    Transform transform;
};

// A camera whose shutter is open for some time. Between steps, its rays are interpolated.
class MovingCamera {
  public:
    // `steps` are at equal steps of time, the first when the shutter opens; there is at least one. Throws as Camera.
    MovingCamera(const std::vector<CameraStep> &steps, int width, int height, double pixelAspect);

    const Camera &atOpening() const { return steps_.front(); }
    bool moves() const { return steps_.size() > 1; }

    // The camera that `give` gets gives the ray at a step; `time` is from 0, the first step, to 1, the last one.
    template <class Give>
    CameraRay ray(double time, Give give) const {
        if (!moves()) return give(steps_.front());
        const Moment moment = momentAt(time);
        return between(give(steps_[moment.step]), give(steps_[moment.step + 1]), moment.fraction);
    }
    Vec3 forward(double time) const;

  private:
    struct Moment {
        std::size_t step; // the one before, but not the last one
        double fraction;  // of the way to the next one
    };
    Moment momentAt(double time) const;
    static CameraRay between(const CameraRay &from, const CameraRay &to, double fraction);

    std::vector<Camera> steps_;
};

} // namespace velm::host
