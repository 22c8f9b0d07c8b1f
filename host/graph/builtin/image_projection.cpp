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
//
// The output "Height" is for bumps: white is raised by 2 % of the image's width at the sample. LightWave does not
// publish how high its bumps are.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/texture_space.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host::builtin {

namespace {

enum {
    kImage,
    kProjection,
    kAxis,
    kSpace,
    kMap = kSpace + kSpaceRowCount,
    kWrapU,
    kWrapV,
    kRepeatsU,
    kRepeatsV,
    kFalloff,
    kAntialiasing = kFalloff + kFalloffRowCount,
    kPixelBlending,
    kNegative
};
enum { kColourOut, kAlphaOut, kLuminanceOut, kHeightOut };
enum { kPlanar, kCylindrical, kSpherical, kCubic, kFront, kUv };
enum { kReset, kRepeat, kMirror, kEdge };

constexpr const char *kProjectionTexts[] = {"Planar", "Cylindrical", "Spherical", "Cubic", "Front", "UV", nullptr};
constexpr const char *kWrapTexts[] = {"Reset", "Repeat", "Mirror", "Edge", nullptr};

constexpr double kHeightOfWhite = 0.02; // as a fraction of the image's width

using Vector = TextureSpace::Vector;

// A point of the image: u across and v up.
struct Spot {
    double u = 0, v = 0;
    double width = 0;  // of the sample's footprint, as a fraction of the image's width; 0 where it is not known
    double metres = 0; // the width of the image at the sample; 0 where it is not known
    bool isOnMap = true;
};

// The projection of one sample.
class Projection {
  public:
    explicit Projection(const Evaluation &evaluation) : evaluation_(evaluation), space_(evaluation, kSpace) {}

    Spot spot() const {
        const int axis = evaluation_.choice(kAxis);
        switch (evaluation_.choice(kProjection)) {
        case kCylindrical: return around(axis, false);
        case kSpherical: return around(axis, true);
        case kCubic: return planar(space_.normalAxis());
        case kFront: return front();
        case kUv: return onMap();
        default: return planar(axis);
        }
    }

    // The factor of the opacity at the sample, 0 to 1.
    double falloff() const { return space_.falloff(kFalloff); }

    // The width in metres of a UV map at the sample, from the areas of the triangle in space and on the map; 0 where it
    // is not known.
    double mapWidth() const {
        ShadingSample corner = sample();
        if (corner.vertices[3]) return 0;
        Vector u{}, v{};
        for (std::size_t k = 0; k < 3; ++k) {
            std::fill_n(corner.vertexWeights, 3, 0.0F);
            corner.vertexWeights[k] = 1;
            if (!evaluation_.uvAt(corner, u[k], v[k])) return 0;
        }
        const auto edge = [&](int to, int i) {
            return double{corner.vertexPositions[to][i]} - double{corner.vertexPositions[0][i]};
        };
        const double x = edge(1, 1) * edge(2, 2) - edge(1, 2) * edge(2, 1);
        const double y = edge(1, 2) * edge(2, 0) - edge(1, 0) * edge(2, 2);
        const double z = edge(1, 0) * edge(2, 1) - edge(1, 1) * edge(2, 0);
        const double onMap = std::fabs((u[1] - u[0]) * (v[2] - v[0]) - (u[2] - u[0]) * (v[1] - v[0]));
        return onMap > 0 ? std::sqrt(std::hypot(x, y, z) / onMap) : 0;
    }

  private:
    const ShadingSample &sample() const { return evaluation_.sample(); }

    Spot planar(int axis) const {
        const Vector size = space_.size(), &q = space_.point();
        const std::size_t across = axis == 0 ? 2 : 0, up = axis == 1 ? 2 : 1;
        return {.u = q[across] / size[across] + 0.5,
                .v = q[up] / size[up] + 0.5,
                .width = sample().spotSize / std::fabs(size[across]),
                .metres = std::fabs(size[across])};
    }

    Spot around(int axis, bool isSpherical) const {
        // The angle about the axis is 0 at the edges of the image and half a turn in its middle.
        const Vector &q = space_.point();
        const double across = axis == 0 ? -q[2] : q[0];
        const double along = axis == 1 ? q[2] : -q[1];
        const double fromAxis = std::hypot(across, along), height = q[static_cast<std::size_t>(axis)];
        const double turns = 1 - std::atan2(across, along) / (2 * std::numbers::pi);
        const double repeats = evaluation_.scalar(kRepeatsU);
        const double around = 2 * std::numbers::pi * fromAxis; // metres
        Spot spot{.u = repeats * (turns - std::floor(turns)),
                  .width = std::fabs(repeats) * sample().spotSize / around,
                  .metres = around / std::fabs(repeats)};
        if (isSpherical)
            spot.v = evaluation_.scalar(kRepeatsV) * (0.5 + std::atan2(height, fromAxis) / std::numbers::pi);
        else
            spot.v = height / space_.size()[static_cast<std::size_t>(axis)] + 0.5;
        return spot;
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
    const TextureSpace space_;
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

double finite(double number) { return std::isfinite(number) ? number : 0; }

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
        if (output == kHeightOut && evaluation.choice(kProjection) == kUv) spot.metres = projection.mapWidth();
    }
    const double down = 1 - spot.v, size = spot.width * evaluation.scalar(kAntialiasing);
    const int blend = evaluation.choice(kPixelBlending), negative = evaluation.choice(kNegative);
    if (output == kAlphaOut) {
        if (falloff > 0 && images.hasAlpha(image)) falloff *= images.alphaSpot(image, spot.u, down, size, blend);
        return evaluation.set(falloff);
    }
    if (output == kLuminanceOut || output == kHeightOut) {
        double luminance = spot.isOnMap ? images.lumaSpot(image, spot.u, down, size, blend) : 0;
        if (spot.isOnMap && negative) luminance = 1 - luminance;
        return evaluation.set(output == kHeightOut ? kHeightOfWhite * finite(spot.metres) * luminance : luminance);
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
    .parameters = joinRows(std::to_array<Parameter>({
                               {.label = "Image", .kind = Kind::image},
                               {.label = "Projection", .kind = Kind::choice, .texts = kProjectionTexts},
                               {.label = "Axis", .kind = Kind::choice, .initial = {2}, .texts = kAxisTexts},
                           }),
                           kSpaceRows,
                           std::to_array<Parameter>({
                               {.label = "UV Map", .kind = Kind::text},
                               {.label = "Wrap U", .kind = Kind::choice, .initial = {kRepeat}, .texts = kWrapTexts},
                               {.label = "Wrap V", .kind = Kind::choice, .initial = {kRepeat}, .texts = kWrapTexts},
                               {.label = "Repeats U", .kind = Kind::scalar, .initial = {1}},
                               {.label = "Repeats V", .kind = Kind::scalar, .initial = {1}},
                           }),
                           kFalloffRows,
                           std::to_array<Parameter>({
                               {.label = "Antialiasing", .kind = Kind::percent, .initial = {1}},
                               {.label = "Pixel Blending", .kind = Kind::choice, .initial = {1}, .texts = kSwitchTexts},
                               {.label = "Negative", .kind = Kind::choice, .texts = kSwitchTexts},
                           })),
    .outputs = {{{"Color", kConnectColour},
                 {"Alpha", kConnectScalar},
                 {"Luminance", kConnectScalar},
                 {"Height", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
