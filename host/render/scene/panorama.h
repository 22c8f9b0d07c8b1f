// An image that surrounds the scene, as a light.
#pragma once

#include "host/image/image.h"
#include "host/render/geometry/sampling.h"
#include "host/render/geometry/vector.h"

#include <memory>
#include <vector>

namespace velm::host {

// Draws directions with a probability in proportion to the light that the image sends from there, so that a small
// bright sun gets most of them: first a row, then a pixel of the row, then a point of the pixel (Pharr, Jakob and
// Humphreys, "Physically Based Rendering", 3rd edition, 14.2.4). Within a pixel the light is even. Images wider than
// 2048 pixels are used at a lower resolution.
class Panorama {
  public:
    // The image is mapped as directionToImage maps it, without a seam angle, in the coordinates of the light. It has to
    // live as long as the panorama. `upperHalf`: only directions above the horizon shine. Components that are negative
    // or not finite count as 0. [interface thread]
    Panorama(const HostImage &image, bool upperHalf);

    struct Sample {
        Vec3 direction; // to the light, in its coordinates; unit length
        Vec3 colour;    // that a facing white surface receives from there, divided by the direction's density
    };
    // The direction that a point stands for. The mean of the colours, each multiplied by the cosine at the surface, is
    // the light that the surface reflects. False for an image that is black. [render threads]
    bool sample(const UnitSquare &point, Sample &result) const;

    // Whether a panorama made of these would be the same. [any thread]
    bool isOf(const HostImage &image, bool upperHalf) const {
        return &image == &image_ && upperHalf == upperHalf_ && isCurrent();
    }

    // Whether the image still has the pixels that it had when this was made. If not, only the functions from here on
    // may be called. [any thread]
    bool isCurrent() const { return image_.pixelChanges == pixelChanges_; }
    // A panorama of the pixels that the image has now. [between frames]
    std::shared_ptr<const Panorama> renewed() const { return std::make_shared<const Panorama>(image_, upperHalf_); }

  private:
    Vec3 colourAt(int x, int y) const;
    double upperEdge(int row) const; // cosine of the angle to straight up

    const HostImage &image_;
    const ImageLevel &level_;
    const bool upperHalf_;
    const unsigned pixelChanges_;
    // Sums of the mean of the components: over the rows from the top, weighted by solid angle, and over the pixels of
    // each row from the left.
    std::vector<double> rows_, pixels_;
};

} // namespace velm::host
