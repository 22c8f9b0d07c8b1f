// An image of the scene, projected onto the surface as LightWave projects the images of its texture layers.
//
// The texture has axes of its own: those of the object or the world, rotated by heading, pitch and bank, with the
// origin at "Center". The projection maps a position q in these axes, in metres, to coordinates of the image: u to the
// right and v upwards, each from 0 to 1. "Size" is the size of the image along the axes:
// - Planar, along the axis: the other two components of q, divided by the size. q = 0 is the middle of the image.
// - Cylindrical: u goes once around the axis, and v along it. For the axis Y, the middle of the image faces -Z.
// - Spherical: u goes once around the axis, and v from its negative end to its positive end.
// - Cubic: planar, along that axis to which the polygon's normal is closest.
// - Front: through the camera. - UV: by the coordinates of a UV map.
// LightWave's documentation gives the axes but not the signs. Here u increases in the direction in which an image
// around an axis is not mirrored when it is seen from outside. UV maps that LightWave's modeller makes around an axis
// have the same directions of u and v, but begin a quarter of a turn further.
#include "host/graph/builtin/definitions.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host::builtin {

namespace {

enum {
    kImage,
    kProjection,
    kAxis,
    kCoordinates,
    kCentre,
    kSize,
    kHeading,
    kPitch,
    kBank,
    kMap,
    kWrapU,
    kWrapV,
    kRepeatsU,
    kRepeatsV,
    kFalloffType,
    kFalloff,
    kAntialiasing,
    kPixelBlending,
    kNegative
};
enum { kColourOut, kAlphaOut, kLuminanceOut };
enum { kPlanar, kCylindrical, kSpherical, kCubic, kFront, kUv };
enum { kObject, kWorld };
enum { kReset, kRepeat, kMirror, kEdge };
enum { kCubicFalloff, kSphericalFalloff, kLinearX };

constexpr const char *kProjectionTexts[] = {"Planar", "Cylindrical", "Spherical", "Cubic", "Front", "UV", nullptr};
constexpr const char *kAxisTexts[] = {"X", "Y", "Z", nullptr};
constexpr const char *kCoordinateTexts[] = {"Object", "World", nullptr};
constexpr const char *kWrapTexts[] = {"Reset", "Repeat", "Mirror", "Edge", nullptr};
constexpr const char *kFalloffTexts[] = {"Cubic", "Spherical", "Linear X", "Linear Y", "Linear Z", nullptr};
constexpr const char *kSwitchTexts[] = {"Off", "On", nullptr};

using Vector = std::array<double, 3>;

// A point of the image: u across and v up.
struct Spot {
    double u = 0, v = 0;
    double width = 0; // of the sample's footprint, as a fraction of the image's width; 0 where it is not known
    bool isOnMap = true;
};

// Turns a pair of components back by an angle: `first` towards where `second` was.
void turnBack(double &first, double &second, double angle) {
    if (angle == 0) return;
    const double cosine = std::cos(angle), sine = std::sin(angle), before = first;
    first = before * cosine + second * sine;
    second = second * cosine - before * sine;
}

// The projection of one sample.
class Projection {
  public:
    explicit Projection(const Evaluation &evaluation)
        : evaluation_(evaluation), isInWorld_(evaluation.choice(kCoordinates) == kWorld),
          heading_(evaluation.scalar(kHeading)), pitch_(evaluation.scalar(kPitch)), bank_(evaluation.scalar(kBank)) {
        const double *position = isInWorld_ ? sample().position : sample().objectPosition;
        const Vector centre = evaluation.triple(kCentre);
        for (std::size_t i = 0; i < 3; ++i) q_[i] = position[i] - centre[i];
        turn(q_);
    }

    Spot spot() const {
        const int axis = evaluation_.choice(kAxis);
        switch (evaluation_.choice(kProjection)) {
        case kCylindrical: return around(axis, false);
        case kSpherical: return around(axis, true);
        case kCubic: return planar(cubeAxis());
        case kFront: return front();
        case kUv: return onMap();
        default: return planar(axis);
        }
    }

    // The factor of the opacity at the sample, 0 to 1. A linear falloff acts on the positive side of its axis, or on
    // the negative side if its value is negative.
    double falloff() const {
        const Vector falloff = evaluation_.triple(kFalloff);
        if (falloff == Vector{}) return 1;
        const Vector loss{q_[0] * falloff[0], q_[1] * falloff[1], q_[2] * falloff[2]};
        const int type = evaluation_.choice(kFalloffType);
        double lost = 0;
        if (type == kCubicFalloff)
            lost = std::max({std::fabs(loss[0]), std::fabs(loss[1]), std::fabs(loss[2])});
        else if (type == kSphericalFalloff)
            lost = std::hypot(loss[0], loss[1], loss[2]);
        else
            lost = loss[static_cast<std::size_t>(type - kLinearX)];
        return std::clamp(1 - lost, 0.0, 1.0);
    }

  private:
    const ShadingSample &sample() const { return evaluation_.sample(); }

    void turn(Vector &vector) const {
        turnBack(vector[2], vector[0], heading_);
        turnBack(vector[1], vector[2], pitch_);
        turnBack(vector[0], vector[1], bank_);
    }

    Spot planar(int axis) const {
        const Vector size = evaluation_.triple(kSize);
        const std::size_t across = axis == 0 ? 2 : 0, up = axis == 1 ? 2 : 1;
        return {.u = q_[across] / size[across] + 0.5,
                .v = q_[up] / size[up] + 0.5,
                .width = sample().spotSize / std::fabs(size[across])};
    }

    Spot around(int axis, bool isSpherical) const {
        // The angle about the axis is 0 at the edges of the image and half a turn in its middle.
        const double across = axis == 0 ? -q_[2] : q_[0];
        const double along = axis == 1 ? q_[2] : -q_[1];
        const double fromAxis = std::hypot(across, along), height = q_[static_cast<std::size_t>(axis)];
        const double turns = 1 - std::atan2(across, along) / (2 * std::numbers::pi);
        const double repeats = evaluation_.scalar(kRepeatsU);
        Spot spot{.u = repeats * (turns - std::floor(turns)),
                  .width = std::fabs(repeats) * sample().spotSize / (2 * std::numbers::pi * fromAxis)};
        if (isSpherical)
            spot.v = evaluation_.scalar(kRepeatsV) * (0.5 + std::atan2(height, fromAxis) / std::numbers::pi);
        else
            spot.v = height / evaluation_.triple(kSize)[static_cast<std::size_t>(axis)] + 0.5;
        return spot;
    }

    // The texture's axis to which the polygon's normal is closest.
    int cubeAxis() const {
        const double *world = sample().geometricNormal;
        Vector normal{world[0], world[1], world[2]};
        if (!isInWorld_) {
            const double *matrix = sample().objectToWorld; // normals are transformed by its transpose
            for (std::size_t i = 0; i < 3; ++i)
                normal[i] = matrix[i] * world[0] + matrix[3 + i] * world[1] + matrix[6 + i] * world[2];
        }
        turn(normal);
        int axis = 0;
        for (int i = 1; i < 3; ++i)
            if (std::fabs(normal[static_cast<std::size_t>(i)]) > std::fabs(normal[static_cast<std::size_t>(axis)]))
                axis = i;
        return axis;
    }

    Spot front() const {
        Spot spot;
        services().utility->frontMapping(sample().position, &spot.u, &spot.v);
        spot.v = 1 - spot.v;
        return spot;
    }

    Spot onMap() const {
        Spot spot;
        spot.isOnMap = evaluation_.uv(spot.u, spot.v);
        return spot;
    }

    const Evaluation &evaluation_;
    const bool isInWorld_;
    const double heading_, pitch_, bank_;
    Vector q_{}; // the position in the texture's axes
};

// Wraps a coordinate to 0..1; false where the image does not cover it, or where it is not finite.
bool wrap(double &coordinate, int mode) {
    if (!std::isfinite(coordinate)) return false;
    switch (mode) {
    case kReset: return coordinate >= 0 && coordinate <= 1;
    case kMirror: coordinate = std::fabs(coordinate - 2 * std::floor(coordinate / 2 + 0.5)); return true;
    case kEdge: coordinate = std::clamp(coordinate, 0.0, 1.0); return true;
    default: coordinate -= std::floor(coordinate); return true;
    }
}

// Wraps the spot onto the image. Only a repeated image blends its left edge with its right one.
void place(const Evaluation &evaluation, int imageWidth, Spot &spot) {
    const int mode = evaluation.choice(kWrapU);
    spot.isOnMap = spot.isOnMap && wrap(spot.u, mode) && wrap(spot.v, evaluation.choice(kWrapV));
    const double half = 0.5 / imageWidth;
    if (mode != kRepeat && spot.isOnMap) spot.u = std::clamp(spot.u, half, 1 - half);
}

void give(const Evaluation &evaluation, int output) {
    const HostImageList &images = *services().images;
    HostImage *image = evaluation.image();
    int width = 0, height = 0;
    if (image) images.size(image, &width, &height);
    Spot spot{.isOnMap = false};
    double falloff = 0;
    if (width > 0 && height > 0) {
        const Projection projection(evaluation);
        spot = projection.spot();
        place(evaluation, width, spot);
        if (output == kAlphaOut && spot.isOnMap) falloff = projection.falloff();
    }
    const double down = 1 - spot.v, size = spot.width * evaluation.scalar(kAntialiasing);
    const int blend = evaluation.choice(kPixelBlending), negative = evaluation.choice(kNegative);
    if (output == kAlphaOut) {
        if (falloff > 0 && images.hasAlpha(image)) falloff *= images.alphaSpot(image, spot.u, down, size, blend);
        return evaluation.set(falloff);
    }
    if (output == kLuminanceOut) {
        const double luminance = spot.isOnMap ? images.lumaSpot(image, spot.u, down, size, blend) : 0;
        return evaluation.set(spot.isOnMap && negative ? 1 - luminance : luminance);
    }
    Vector colour{};
    if (spot.isOnMap) images.rgbSpot(image, spot.u, down, size, blend, colour.data());
    if (spot.isOnMap && negative)
        for (double &component : colour) component = 1 - component;
    evaluation.set(colour);
}

} // namespace

constinit const Definition imageProjection{
    .name = "Image Projection",
    .colour = kTextureColour,
    .parameters = {{{.label = "Image", .kind = Kind::image},
                    {.label = "Projection", .kind = Kind::choice, .texts = kProjectionTexts},
                    {.label = "Axis", .kind = Kind::choice, .initial = {2}, .texts = kAxisTexts},
                    {.label = "Coordinates", .kind = Kind::choice, .texts = kCoordinateTexts},
                    {.label = "Center", .kind = Kind::vector},
                    {.label = "Size", .kind = Kind::vector, .initial = {1, 1, 1}},
                    {.label = "Heading", .kind = Kind::angle},
                    {.label = "Pitch", .kind = Kind::angle},
                    {.label = "Bank", .kind = Kind::angle},
                    {.label = "UV Map", .kind = Kind::text},
                    {.label = "Wrap U", .kind = Kind::choice, .initial = {kRepeat}, .texts = kWrapTexts},
                    {.label = "Wrap V", .kind = Kind::choice, .initial = {kRepeat}, .texts = kWrapTexts},
                    {.label = "Repeats U", .kind = Kind::scalar, .initial = {1}},
                    {.label = "Repeats V", .kind = Kind::scalar, .initial = {1}},
                    {.label = "Falloff Type", .kind = Kind::choice, .texts = kFalloffTexts},
                    {.label = "Falloff", .kind = Kind::vector},
                    {.label = "Antialiasing", .kind = Kind::percent, .initial = {1}},
                    {.label = "Pixel Blending", .kind = Kind::choice, .initial = {1}, .texts = kSwitchTexts},
                    {.label = "Negative", .kind = Kind::choice, .texts = kSwitchTexts}}},
    .outputs = {{{"Color", kConnectColour}, {"Alpha", kConnectScalar}, {"Luminance", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
