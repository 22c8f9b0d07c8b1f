#include "host/open/framing.h"

#include "host/base/angles.h"
#include "host/render/geometry/transform.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velm::host {

namespace {

constexpr double kFieldOfView = 40; // of the picture's longer side, degrees

// Heading, pitch and bank of a camera, in degrees.
Double3 rotationOf(View view) {
    switch (view) {
    case View::front: return {0, 0, 0};
    case View::back: return {180, 0, 0};
    case View::left: return {90, 0, 0};
    case View::right: return {-90, 0, 0};
    case View::top: return {0, 90, 0};
    case View::bottom: return {0, -90, 0};
    case View::threeQuarter: return {-35, 20, 0};
    }
    return {};
}

// The middle of the range of positions along one side of the picture from which the box fits, and how far forward the
// camera may be. A corner at x and depth z fits if |x - middle| <= slope * (z - forward): the two lines through the
// outermost corners limit the camera on both sides and meet at the foremost position.
struct Range {
    double lowest = -std::numeric_limits<double>::infinity(); // of x - slope * z and of -x - slope * z
    double highest = -std::numeric_limits<double>::infinity();

    void include(double x, double z, double slope) {
        highest = std::max(highest, x - slope * z);
        lowest = std::max(lowest, -x - slope * z);
    }
    double middle() const { return (highest - lowest) / 2; }
    double forward(double slope) const { return -(highest + lowest) / (2 * slope); }
};

} // namespace

CameraDescription framed(const Bounds &bounds, View view, double aspect) {
    CameraDescription camera;
    camera.rotation = rotationOf(view);
    const double longer = std::tan(kFieldOfView / 2 * kRadiansPerDegree);
    const double halfWidth = aspect >= 1 ? longer : longer * aspect;
    camera.fieldOfView = 2 * std::atan(halfWidth) / kRadiansPerDegree;
    const double slopeX = halfWidth * (1 - 2 * kFrameMargin), slopeY = slopeX / aspect;
    const Matrix toWorld = rotationMatrix(camera.rotation);
    Range across, upwards;
    for (int corner = 0; corner < 8; ++corner) {
        const Vec3 point = toWorld.transposedTimes(
            {bounds.sides[0][corner & 1], bounds.sides[1][corner >> 1 & 1], bounds.sides[2][corner >> 2 & 1]});
        across.include(point.x, point.z, slopeX);
        upwards.include(point.y, point.z, slopeY);
    }
    const double forward = std::min(across.forward(slopeX), upwards.forward(slopeY));
    const Vec3 position = toWorld * Vec3{across.middle(), upwards.middle(), forward};
    camera.position = {position.x, position.y, position.z};
    return camera;
}

} // namespace velm::host
