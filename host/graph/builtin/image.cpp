// An image of the scene, mapped by UV coordinates and repeated outside 0 to 1. Where the sample has no coordinates, or
// no image is chosen, the result is the background colour with an alpha of 0.
#include "host/graph/builtin/definitions.h"

#include <cmath>

namespace velm::host::builtin {

namespace {

enum { kImage, kMap, kBackground };
enum { kColourOut, kAlphaOut, kLuminanceOut };

// A spot size of 0 selects bilinear interpolation.
constexpr double kNoSpot = 0;
constexpr int kBlendPixels = 1;

void give(const Evaluation &evaluation, int output) {
    const HostImageList &images = *services().images;
    HostImage *image = evaluation.image();
    int width = 0, height = 0;
    if (image) images.size(image, &width, &height);
    double u = 0, v = 0;
    const bool shown = width > 0 && height > 0 && evaluation.uv(u, v);
    // v runs upwards on maps and downwards on images.
    const double across = u - std::floor(u), down = 1 - (v - std::floor(v));
    if (output == kColourOut) {
        std::array<double, 3> colour = evaluation.triple(kBackground);
        if (shown) images.rgbSpot(image, across, down, kNoSpot, kBlendPixels, colour.data());
        return evaluation.set(colour);
    }
    if (output == kAlphaOut)
        return evaluation.set(!shown                   ? 0.0
                              : images.hasAlpha(image) ? images.alphaSpot(image, across, down, kNoSpot, kBlendPixels)
                                                       : 1.0);
    evaluation.set(shown ? images.lumaSpot(image, across, down, kNoSpot, kBlendPixels) : 0.0);
}

} // namespace

constinit const Definition image{
    .name = "Image",
    .colour = kTextureColour,
    .parameters = {{{.label = "Image", .kind = Kind::image},
                    {.label = "UV Map", .kind = Kind::text},
                    {.label = "Background Color", .kind = Kind::colour}}},
    .outputs = {{{"Color", kConnectColour}, {"Alpha", kConnectScalar}, {"Luminance", kConnectScalar}}},
    .evaluate = give,
};

} // namespace velm::host::builtin
